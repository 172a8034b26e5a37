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

/// A pattern with a slash in it is of whole paths, another of names anywhere.
std::vector<std::string> partsOf(std::string_view pattern) {
    if (pattern.ends_with('/'))
        pattern.remove_suffix(1);
    std::vector<std::string> parts;
    if (pattern.empty())
        return parts;
    if (pattern.find('/') == std::string_view::npos)
        parts.emplace_back(kAnyDepth);
    for (const auto part : Text::pieces(pattern, '/'))
        parts.emplace_back(part);
    return parts;
}

/// Goes through all ways of laying the pattern over the path at once, since trying them in turn can
/// take forever.
bool isOf(const std::string& pattern, std::string_view path) {
    const auto parts = partsOf(pattern);
    const auto isAnyDepth = [&](std::size_t at) {
        return at < parts.size() && parts[at] == kAnyDepth;
    };
    std::vector<bool> reached(parts.size() + 1);
    const auto reach = [&](std::vector<bool>& places, std::size_t at) {
        places[at] = true;
        for (; isAnyDepth(at) && at + 1 < parts.size(); ++at)
            places[at + 1] = true;
    };
    reach(reached, 0);
    for (const auto name : Text::pieces(path, '/')) {
        std::vector<bool> next(reached.size());
        for (std::size_t at = 0; at < parts.size(); ++at) {
            if (!reached[at])
                continue;
            if (isAnyDepth(at))
                reach(next, at + 1 < parts.size() ? at : at + 1);
            else if (::fnmatch(parts[at].c_str(), std::string(name).c_str(), 0) == 0)
                reach(next, at + 1);
        }
        if (next.back())
            return true;
        reached = std::move(next);
    }
    return false;
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

bool isIgnored(std::string_view path, std::span<const std::string> patterns) {
    return std::any_of(patterns.begin(), patterns.end(), [&](const std::string& pattern) {
        return !pattern.starts_with('!') && isOf(pattern, path);
    });
}

bool isIgnoredBelow(std::string_view folder, std::string_view path,
                    std::span<const std::string> patterns) {
    if (folder.empty())
        return isIgnored(path, patterns);
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/' &&
           isIgnored(path.substr(folder.size() + 1), patterns);
}

} // namespace slatewise::MediaHashList
