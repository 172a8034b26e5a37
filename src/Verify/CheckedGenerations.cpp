#include "MediaHashList/HashedTree.h"
#include "MediaHashList/History.h"
#include "MediaHashList/IgnorePatterns.h"
#include "Offload/TreeWalker.h"
#include "Verify/TreeCheck.h"

#include <algorithm>
#include <utility>

/// What a check whose files were all the same leaves behind: the next generation of each history.
namespace slatewise::Verify {

namespace {

/// Takes away those patterns of a list for which it would leave out a file that is there to be
/// listed: a name that systems leave behind may have been wanted here.
void keepWanted(const std::vector<MediaHashList::HashedFile>& files, const std::string& folder,
                std::vector<std::string>& patterns) {
    const auto prefix = folder.empty() ? "" : folder + "/";
    MediaHashList::IgnoreList list(patterns);
    std::vector<std::string> wanted;
    for (const auto& file : files) {
        if (!file.path.starts_with(prefix) || MediaHashList::liesInHistory(file.path))
            continue;
        auto below = file.path.substr(prefix.size());
        if (list.ignores(below))
            wanted.push_back(std::move(below));
    }
    if (wanted.empty())
        return;
    std::erase_if(patterns, [&](const std::string& pattern) {
        MediaHashList::IgnoreList alone({&pattern, 1});
        return std::any_of(wanted.begin(), wanted.end(),
                           [&](const std::string& path) { return alone.ignores(path); });
    });
}

/// Adds the patterns of those trashes that are there to those of the tree's own list.
void leaveOutTrash(const ListedTree& tree, MediaHashList::IgnoredBelow& ignored) {
    for (const auto& entry : tree.entries) {
        auto pattern =
            tree.trashPattern(entry.isDirectory ? entry.relativePath + "/" : entry.relativePath);
        if (pattern.empty())
            continue;
        auto& own = ignored[""];
        if (std::find(own.begin(), own.end(), pattern) == own.end())
            own.push_back(std::move(pattern));
    }
}

} // namespace

std::vector<std::string> addGenerations(const ListedTree& tree, Result& result,
                                        const OffloadSettings& settings) {
    for (const auto& [folder, c4] : tree.unfinished)
        MediaHashList::History::enterUnfinished(*tree.folder, folder, c4);
    auto& hashed = result.tree;
    hashed.creator = MediaHashList::creatorHere(settings);
    hashed.process = MediaHashList::Process::InPlace;
    hashed.ignored = MediaHashList::ignorePatterns(TreeWalker::defaultSkipNames());
    keepWanted(hashed.files, "", hashed.ignored);
    hashed.ignoredBelow = tree.ignored;
    leaveOutTrash(tree, hashed.ignoredBelow);
    for (auto& [folder, patterns] : hashed.ignoredBelow) {
        std::erase_if(patterns, [&](const std::string& pattern) {
            return std::find(hashed.ignored.begin(), hashed.ignored.end(), pattern) !=
                   hashed.ignored.end();
        });
        keepWanted(hashed.files, folder, patterns);
    }
    auto added = MediaHashList::addGenerations(*tree.folder, {}, hashed, tree.withHistory);
    if (added.failure)
        std::rethrow_exception(added.failure);
    return std::move(added.leftOut);
}

} // namespace slatewise::Verify
