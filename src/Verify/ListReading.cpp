#include "Verify/ListReading.h"

#include "MediaHashList/History.h"
#include "MediaHashList/ListError.h"
#include "Offload/ReportNames.h"
#include "Offload/TreeWalker.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"
#include "Reports/ManifestJSON.h"
#include "Reports/ReportWriter.h"
#include "Verify/ChecksumList.h"
#include "Verify/SessionFolder.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <set>

namespace slatewise::Verify {

namespace {

using MediaHashList::History;
using MediaHashList::ListError;
using Reason = MediaHashList::ListError::Reason;

void requireDown(const std::filesystem::path& list, const std::string& path) {
    if (!MediaHashList::leadsDown(path))
        throw ListError(Reason::LeadsOut, path, list);
}

std::string readList(const std::filesystem::path& list) {
    return MediaHashList::readList(RootFolder(list.parent_path()), list.filename());
}

void expect(Expected& expected, HashFormat format, std::string_view value) {
    const HashValue wanted{format, format == HashFormat::C4 ? std::string(value)
                                                            : Text::asciiLowercased(value)};
    if (std::find(expected.begin(), expected.end(), wanted) == expected.end())
        expected.push_back(wanted);
}

/// A name that JSON cannot hold stands in the checksum list, and here as it would be shown. Of what
/// lies below a session's folder, whose own name may be such a one.
std::set<std::string> namesAsShown(const ListedTree& tree, const std::string& prefix) {
    std::set<std::string> names;
    for (auto file = tree.files.lower_bound(prefix);
         file != tree.files.end() && file->first.starts_with(prefix); ++file) {
        const auto name = std::string_view(file->first).substr(prefix.size());
        if (auto shown = Text::displayable(name); shown != name)
            names.insert(std::move(shown));
    }
    return names;
}

/// Of a set that lies in the archive and on the disk, under one name, that is told once.
void tellFailedRun(const std::filesystem::path& list, ListedTree& tree) {
    const auto set = list.parent_path().filename();
    const bool isTold =
        std::any_of(tree.troubles.begin(), tree.troubles.end(), [&](const auto& trouble) {
            return trouble.kind == ListTrouble::Kind::OfFailedRun &&
                   trouble.list.parent_path().filename() == set;
        });
    if (!isTold)
        tree.troubles.push_back({ListTrouble::Kind::OfFailedRun, list});
}

void addManifest(const ReportSet& set, const std::filesystem::path& list, ListedTree& tree) {
    const auto& manifest = *set.manifest;
    tree.lists.insert(list);
    const auto& names = manifest.skipNames;
    tree.reported[set.prefix] =
        names ? SkipNames(names->begin(), names->end()) : TreeWalker::defaultSkipNames();
    for (const auto& written : manifest.hashLists)
        tree.listsOfRuns.insert(set.prefix + written);
    if (manifest.status == OutcomeStatus::Failed)
        tellFailedRun(list, tree);
    const auto otherwiseNamed = namesAsShown(tree, set.prefix);
    for (const auto& file : manifest.files) {
        const auto path = set.prefix + file.relativePath;
        if (file.action == RowAction::Skip)
            tree.leftOut.insert(path);
        if (file.action == RowAction::Skip || file.action == RowAction::Hash ||
            otherwiseNamed.contains(file.relativePath))
            continue;
        requireDown(list, file.relativePath);
        auto& expected = tree.files[path];
        if (file.sourceSHA256)
            expect(expected, HashFormat::SHA256, *file.sourceSHA256);
    }
}

/// Gives what it read.
std::string addChecksums(const std::filesystem::path& list, const std::string& prefix,
                         ListedTree& tree) {
    tree.lists.insert(list);
    tree.reported.try_emplace(prefix);
    auto text = readList(list);
    for (const auto line : ChecksumList::linesOf(text)) {
        const auto [digest, path] = ChecksumList::parsed(line, list);
        requireDown(list, path);
        expect(tree.files[prefix + path], HashFormat::SHA256, digest);
    }
    return text;
}

std::vector<std::string> sortedLines(std::string_view text) {
    std::vector<std::string> lines;
    for (const auto line : ChecksumList::linesOf(text))
        lines.push_back(Text::displayable(line));
    std::sort(lines.begin(), lines.end());
    return lines;
}

/// Fails with the first that only one of both has. Both are sorted.
void requireSame(const std::vector<std::string>& left, const std::vector<std::string>& right,
                 const std::filesystem::path& list) {
    std::vector<std::string> odd;
    std::set_symmetric_difference(left.begin(), left.end(), right.begin(), right.end(),
                                  std::back_inserter(odd));
    if (!odd.empty())
        throw ListError(Reason::ListsDisagree, odd.front(), list);
}

void requireAgreement(const SessionManifest& manifest, std::string_view checksums,
                      const std::filesystem::path& list) {
    std::string wanted;
    ReportWriter::checksumList(manifest, [&](std::string_view line) { wanted += line; });
    requireSame(sortedLines(wanted), sortedLines(checksums), list);
}

/// Whether a hash list is to name it. One that is no UTF-8 cannot be told apart here from one with
/// a U+FFFD in it.
bool belongsIntoHashList(std::string_view path) {
    return !MediaHashList::liesInHistory(path) && MediaHashList::canHold(path) &&
           path.find("\xef\xbf\xbd") == std::string_view::npos;
}

void requireInChain(const RootFolder& root, const std::filesystem::path& list) {
    const auto chain = MediaHashList::readChain(
        MediaHashList::readList(root, list.parent_path() / MediaHashList::kChainName));
    // The chain may have the name in another form than the disk.
    const auto name = Text::composed(list.filename().native());
    const bool isNamed = std::any_of(chain.begin(), chain.end(), [&](const auto& link) {
        return Text::composed(link.fileName) == name;
    });
    if (!isNamed)
        throw ListError(Reason::NotTheChains);
}

} // namespace

void tell(ListedTree& tree, const std::filesystem::path& list, const Error& failure) {
    if (!tree.damaged.insert(list).second)
        return;
    const auto* const words = dynamic_cast<const ListError*>(&failure);
    // The list is named anyway.
    tree.troubles.push_back(
        {ListTrouble::Kind::Damaged, list,
         words ? std::make_exception_ptr(words->in({})) : std::current_exception()});
}

SessionManifest readManifest(const std::filesystem::path& list) {
    const auto text = readList(list);
    try {
        return ReportWriter::isoDecode(text);
    } catch (const Error&) {
        // Its words are those of a library.
        throw ListError(Reason::NotAList, {}, list);
    } catch (const std::bad_alloc&) {
        throw ListError(Reason::TooLarge, {}, list);
    }
}

std::vector<std::string> namesIn(const std::filesystem::path& checksums) {
    std::vector<std::string> names;
    const auto text = readList(checksums);
    for (const auto line : ChecksumList::linesOf(text)) {
        try {
            names.push_back(ChecksumList::parsed(line, checksums).path);
        } catch (const ListError&) {
            continue;
        }
    }
    return names;
}

bool isChecksumList(const std::filesystem::path& file) {
    const auto text = readList(file);
    const auto lines = ChecksumList::linesOf(text);
    return !lines.empty() && std::all_of(lines.begin(), lines.end(), [&](std::string_view line) {
        try {
            return MediaHashList::leadsDown(ChecksumList::parsed(line, file).path);
        } catch (const ListError&) {
            return false;
        }
    });
}

void addReports(const ReportSet& set, ListedTree& tree) {
    if (const auto list = set.folder / ReportNames::checksums; FileSystem::exists(list)) {
        readOrTell(tree, list, [&] {
            const auto text = addChecksums(list, set.prefix, tree);
            if (set.manifest)
                requireAgreement(*set.manifest, text, list);
        });
    }
    if (!set.manifest)
        return;
    // Who took the manifest alone elsewhere has no set.
    const auto& names = ReportWriter::fileNames;
    const bool isWithOthers = std::any_of(names.begin(), names.end(), [&](std::string_view name) {
        return name != ReportNames::manifest && FileSystem::exists(set.folder / name);
    });
    if (const auto lost = set.folder / ReportNames::checksums;
        isWithOthers && !FileSystem::exists(lost))
        tell(tree, lost, PosixError("open", lost, ENOENT));
    const auto list = set.folder / ReportNames::manifest;
    readOrTell(tree, list, [&] { addManifest(set, list, tree); });
}

namespace {

/// Files of lists that no run has met on its card or written itself: whoever wrote those found the
/// files here, whatever a run left out before.
std::set<std::string_view> namedSince(const History& history, const std::string& prefix,
                                      const ListedTree& tree) {
    std::set<std::string_view> paths;
    for (std::size_t index = 0; index < history.generations().size(); ++index) {
        const auto list =
            prefix + std::string(MediaHashList::kHistoryFolder) + "/" + history.fileNames()[index];
        if (tree.files.contains(list) || tree.listsOfRuns.contains(list))
            continue;
        for (const auto& file : history.generations()[index].files)
            paths.insert(file.path);
    }
    return paths;
}

Expected& expectedBy(int number, const std::string& path, ListedTree& tree) {
    tree.noteLister(path, number);
    return tree.files[path];
}

/// What is known by a history's lists, of those files that it may still be asked for.
void addKnown(const History& history, const std::string& prefix, int number, ListedTree& tree) {
    const auto known = history.known();
    const auto since = namedSince(history, prefix, tree);
    const auto left = history.givenUp(known);
    const std::set<std::string_view> givenUp(left.begin(), left.end());
    for (const auto& [path, values] : known) {
        const auto whole = prefix + path;
        const bool isGivenUp = givenUp.contains(path);
        const bool isLeftOut = !since.contains(path) && tree.isLeftOutByRun(whole);
        if ((isGivenUp || isLeftOut) && !tree.folder->exists(whole)) {
            if (!isGivenUp)
                tree.noteLeftOut(whole);
            continue;
        }
        auto& expected = expectedBy(number, whole, tree);
        for (const auto& value : values)
            expect(expected, value.format, value.value);
    }
    if (history.generations().empty())
        return;
    for (const auto& folder : history.generations().back().folders) {
        const auto whole = prefix + folder.path;
        if (tree.isReported(whole))
            continue;
        tree.folders.insert(whole);
        tree.noteLister(whole + "/", number);
    }
}

/// A list that its chain does not name yet counts for the files as any other does. `list` is its
/// folder.
void addUnfinished(const MediaHashList::UnfinishedList& unfinished, const std::string& folder,
                   const std::string& prefix, const std::filesystem::path& lists, int number,
                   ListedTree& tree) {
    for (const auto& file : unfinished.generation.files) {
        auto& expected = expectedBy(number, prefix + file.path, tree);
        for (const auto& value : file.values)
            expect(expected, value.format, value.value);
    }
    if (!unfinished.canBeEntered())
        return;
    const auto list = lists / unfinished.link.fileName;
    for (auto& trouble : tree.troubles) {
        if (trouble.list == list)
            trouble.kind = ListTrouble::Kind::Unfinished;
    }
    tree.damaged.erase(list);
    tree.unfinished.push_back({folder, unfinished.link.c4});
}

} // namespace

void addHistory(const std::string& folder, int number, ListedTree& tree,
                const std::stop_token& stop) {
    const auto& root = *tree.folder;
    const auto prefix = folder.empty() ? "" : folder + "/";
    const auto lists = prefix + std::string(MediaHashList::kHistoryFolder);
    tree.lists.insert(tree.root / lists);
    const auto history = History::loadReadable(
        root, folder, [&](const auto& list, const Error& failure) { tell(tree, list, failure); },
        stop);
    for (const auto& list : history.brokenReferences(stop)) {
        if (tree.isLeftOutByRun(list) && !root.exists(list))
            tree.noteLeftOut(list);
        else
            tell(tree, tree.root / list, ListError(Reason::NotAsReferred));
    }
    addKnown(history, prefix, number, tree);
    if (history.unfinished())
        addUnfinished(*history.unfinished(), folder, prefix, tree.root / lists, number, tree);
    // What an older one ignored the newest may name.
    if (!history.generations().empty())
        tree.ignored[folder] = history.generations().back().ignored;
    // It grows with each generation, whatever a list of the day before says of it. Reading it has
    // shown that it holds together. A manifest names it as it would be shown.
    const auto chain = lists + "/" + std::string(MediaHashList::kChainName);
    tree.files.erase(chain);
    for (const auto& [place, names] : tree.reported) {
        if (chain.starts_with(place))
            tree.files.erase(place + Text::displayable(chain.substr(place.size())));
    }
}

void compareHashLists(const ReportSet& set, ListedTree& tree) {
    const auto& manifest = *set.manifest;
    std::vector<std::string> listed;
    std::set<std::filesystem::path> seen;
    std::string namedTwice;
    std::filesystem::path newest;
    for (const auto& path : manifest.hashLists) {
        if (!path.ends_with(".mhl"))
            continue;
        const auto whole = set.prefix + asItLies(tree.root / set.prefix, path).native();
        newest = tree.root / whole;
        // Whoever wrote it a thousand times does not have it read as often.
        if (!seen.insert(newest).second) {
            namedTwice = path;
            continue;
        }
        readOrTell(tree, newest, [&] {
            requireDown(newest, path);
            requireInChain(*tree.folder, whole);
            const auto generation =
                MediaHashList::readGeneration(MediaHashList::readList(*tree.folder, whole));
            const auto folder = std::filesystem::path(path).parent_path().parent_path();
            for (const auto& file : generation.files)
                listed.push_back(folder / file.path);
        });
    }
    if (newest.empty() || manifest.status != OutcomeStatus::Verified)
        return;
    std::vector<std::string> proved;
    for (const auto& file : manifest.files) {
        if (file.verifyStatus == VerifyStatus::Verified && belongsIntoHashList(file.relativePath))
            proved.push_back(file.relativePath);
    }
    std::erase_if(listed, [](const std::string& path) { return !belongsIntoHashList(path); });
    std::sort(proved.begin(), proved.end());
    std::sort(listed.begin(), listed.end());
    readOrTell(tree, newest, [&] {
        if (!namedTwice.empty())
            throw ListError(Reason::ListsDisagree, namedTwice, newest);
        requireSame(proved, listed, newest);
    });
}

} // namespace slatewise::Verify
