#include "MediaHashList/IgnorePatterns.h"

#include "MediaHashList/Generation.h"
#include "MediaHashList/History.h"
#include "Platform/Text.h"

#include <fnmatch.h>

#include <algorithm>

namespace slatewise::MediaHashList {

namespace {

std::string patternOf(std::string_view name) {
    std::string pattern;
    for (const char letter : name) {
        if (std::string_view("\\*?[").find(letter) != std::string_view::npos ||
            (pattern.empty() && (letter == '#' || letter == '!')))
            pattern += '\\';
        pattern += letter;
    }
    if (pattern.ends_with(' '))
        pattern.insert(pattern.size() - 1, 1, '\\');
    return pattern;
}

/// As many folders as there are, none included; at a pattern's end, all that lies in a folder.
constexpr std::string_view kAnyDepth = "**";

/// Whether a name is made of these pieces, in their order, with anything between them.
bool isMadeOf(std::string_view name, const std::vector<std::string>& pieces) {
    const auto& first = pieces.front();
    const auto& last = pieces.back();
    if (name.size() < first.size() + last.size() || !name.starts_with(first) ||
        !name.ends_with(last))
        return false;
    name = name.substr(first.size(), name.size() - first.size() - last.size());
    for (std::size_t each = 1; each + 1 < pieces.size(); ++each) {
        const auto at = name.find(pieces[each]);
        if (at == std::string_view::npos)
            return false;
        name.remove_prefix(at + pieces[each].size());
    }
    return true;
}

} // namespace

std::vector<std::string> ignorePatterns(const SkipNames& skipNames) {
    std::vector<std::string> patterns = {std::string(kHistoryFolder),
                                         std::string(kHistoryFolder) + "/", "._*"};
    for (const auto& name : skipNames) {
        if (canHold(name) && name != kHistoryFolder)
            patterns.push_back(patternOf(name));
    }
    return patterns;
}

IgnoreList::IgnoreList(std::span<const std::string> patterns) : reached_(1) {
    for (const auto& pattern : patterns)
        add(pattern);
}

/// Names are bytes, which the library's function need not take. So it is asked only of what is more
/// than stars.
IgnoreList::Part IgnoreList::partOf(std::string_view text) {
    Part part;
    part.text = text;
    part.pieces.emplace_back();
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '?' || text[at] == '[') {
            part.kind = Part::Kind::Glob;
            return part;
        }
        if (text[at] == '*') {
            part.pieces.emplace_back();
            continue;
        }
        at += text[at] == '\\' && at + 1 < text.size() ? 1 : 0;
        part.pieces.back() += text[at];
    }
    part.kind = part.pieces.size() > 1 ? Part::Kind::Stars : Part::Kind::Text;
    if (part.kind == Part::Kind::Text)
        part.text = part.pieces.front();
    return part;
}

bool IgnoreList::Part::isOf(std::string_view name) const {
    switch (kind) {
    case Kind::AnyDepth:
        return true;
    case Kind::Text:
        return name == text;
    case Kind::Stars:
        return isMadeOf(name, pieces);
    case Kind::Glob:
        return name.starts_with(pieces.front()) &&
               ::fnmatch(text.c_str(), std::string(name).c_str(), 0) == 0;
    }
    return false;
}

void IgnoreList::add(std::string_view text) {
    if (text.starts_with('#'))
        return;
    while (text.ends_with(' ') && !text.ends_with("\\ "))
        text.remove_suffix(1);
    Pattern pattern;
    pattern.takesBack = text.starts_with('!');
    text.remove_prefix(pattern.takesBack ? 1 : 0);
    pattern.isOfFolders = text.ends_with('/');
    text.remove_suffix(pattern.isOfFolders ? 1 : 0);
    if (text.empty() || text == kHistoryFolder)
        return;
    const auto number = patterns_.size();
    const Place start = {static_cast<std::uint32_t>(number), 0};
    // A pattern with a slash in it is of whole paths, another of names anywhere.
    if (text.find('/') == std::string_view::npos) {
        pattern.parts.push_back(partOf(text));
        const auto& part = pattern.parts.front();
        if (part.kind == Part::Kind::Text)
            byName_[part.text].push_back(number);
        else
            globs_.push_back(number);
        patterns_.push_back(std::move(pattern));
        return;
    }
    for (const auto part : Text::pieces(text, '/')) {
        // Several in a row say what one does, and each would be gone on from to the end of the row.
        if (part != kAnyDepth)
            pattern.parts.push_back(partOf(part));
        else if (pattern.parts.empty() || pattern.parts.back().kind != Part::Kind::AnyDepth)
            pattern.parts.push_back({Part::Kind::AnyDepth, {}, {}});
    }
    if (pattern.parts.empty())
        return;
    const bool isEverywhere = pattern.parts.front().kind == Part::Kind::AnyDepth;
    patterns_.push_back(std::move(pattern));
    reach(isEverywhere ? everywhere_ : reached_.front().places, start);
}

void IgnoreList::reach(std::vector<Place>& places, Place place) const {
    const auto& parts = patterns_[place.pattern].parts;
    places.push_back(place);
    for (; parts[place.part].kind == Part::Kind::AnyDepth && place.part + 1 < parts.size();)
        places.push_back({place.pattern, ++place.part});
}

/// Goes through all ways of laying the patterns over the path at once, since trying them in turn
/// can take forever.
IgnoreList::Reached IgnoreList::below(const Reached& folder, std::string_view name,
                                      bool isFolder) const {
    Reached found;
    found.last = folder.last;
    const auto note = [&](std::size_t pattern) {
        if (isFolder || !patterns_[pattern].isOfFolders)
            found.last = std::max(found.last, pattern + 1);
    };
    if (const auto named = byName_.find(std::string(name)); named != byName_.end())
        std::for_each(named->second.begin(), named->second.end(), note);
    for (auto glob = globs_.rbegin(); glob != globs_.rend() && *glob >= found.last; ++glob) {
        if (patterns_[*glob].parts.front().isOf(name))
            note(*glob);
    }
    const auto step = [&](const Place& place) {
        const auto& parts = patterns_[place.pattern].parts;
        const bool isLast = place.part + 1 == parts.size();
        if (!(isLast || isFolder) || !parts[place.part].isOf(name))
            return;
        if (isLast)
            note(place.pattern);
        else if (parts[place.part].kind == Part::Kind::AnyDepth)
            reach(found.places, place);
        else
            reach(found.places, {place.pattern, place.part + 1});
    };
    std::for_each(folder.places.begin(), folder.places.end(), step);
    for (const auto& place : everywhere_) {
        const auto& parts = patterns_[place.pattern].parts;
        const bool staysAnyway =
            parts[place.part].kind == Part::Kind::AnyDepth && place.part + 1 < parts.size();
        if (!staysAnyway)
            step(place);
    }
    std::sort(found.places.begin(), found.places.end());
    found.places.erase(std::unique(found.places.begin(), found.places.end()), found.places.end());
    return found;
}

const IgnoreList::Reached& IgnoreList::in(std::string_view folder) {
    const auto isOnTheWay = [&](std::size_t end) {
        return folder.substr(0, end) == std::string_view(folder_).substr(0, end) &&
               (folder.size() == end || folder[end] == '/');
    };
    while (!ends_.empty() && !(folder.size() >= ends_.back() && isOnTheWay(ends_.back()))) {
        ends_.pop_back();
        reached_.pop_back();
    }
    auto at = ends_.empty() ? 0 : ends_.back();
    folder_ = folder;
    for (const auto name : Text::pieces(folder.substr(at), '/')) {
        at = static_cast<std::size_t>(name.data() - folder.data()) + name.size();
        reached_.push_back(below(reached_.back(), name, true));
        ends_.push_back(at);
    }
    return reached_.back();
}

std::optional<bool> IgnoreList::verdict(std::string_view path, bool isFolder) {
    if (patterns_.empty())
        return std::nullopt;
    const auto slash = path.rfind('/');
    const auto holder =
        slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
    const auto name = path.substr(slash == std::string_view::npos ? 0 : slash + 1);
    const auto last = below(in(holder), name, isFolder).last;
    return last == 0 ? std::nullopt : std::optional(!patterns_[last - 1].takesBack);
}

IgnoreLists::IgnoreLists(const IgnoredBelow& below) {
    for (const auto& [folder, patterns] : below)
        lists_.emplace(folder, patterns);
}

bool IgnoreLists::ignores(std::string_view path, bool isFolder) {
    auto folder = path;
    // A list that leaves out a folder with a history has no say in what that one tells.
    std::optional<std::string_view> inner;
    while (!folder.empty()) {
        const auto slash = folder.rfind('/');
        folder = slash == std::string_view::npos ? std::string_view() : folder.substr(0, slash);
        const auto list = lists_.find(folder);
        if (list == lists_.end())
            continue;
        const auto start = folder.empty() ? 0 : folder.size() + 1;
        if (inner && list->second.ignores(inner->substr(start), true))
            return false;
        if (const auto verdict = list->second.verdict(path.substr(start), isFolder))
            return *verdict;
        inner = folder;
    }
    return false;
}

} // namespace slatewise::MediaHashList
