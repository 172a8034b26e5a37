#include "MediaHashList/HashedTree.h"
#include "MediaHashList/History.h"
#include "MediaHashList/IgnorePatterns.h"
#include "Offload/TreeWalker.h"
#include "Verify/TreeCheck.h"

#include <algorithm>

/// What a check whose files were all the same leaves behind: the next generation of each history.
namespace slatewise::Verify {

std::vector<std::string> addGenerations(const ListedTree& tree, Result& result) {
    for (const auto& [folder, c4] : tree.unfinished)
        MediaHashList::History::enterUnfinished(*tree.folder, folder, c4);
    auto& hashed = result.tree;
    hashed.creator = MediaHashList::creatorHere();
    hashed.process = MediaHashList::Process::InPlace;
    hashed.ignored = MediaHashList::ignorePatterns(TreeWalker::defaultSkipNames());
    const auto isWanted = [&](const std::string& folder, const std::string& pattern) {
        return std::any_of(hashed.files.begin(), hashed.files.end(), [&](const auto& file) {
            return !MediaHashList::isOfHistory(file.path) &&
                   MediaHashList::isIgnoredBelow(folder, file.path, {&pattern, 1});
        });
    };
    // A name that systems leave behind may have been wanted here.
    std::erase_if(hashed.ignored, [&](const auto& pattern) { return isWanted("", pattern); });
    hashed.ignoredBelow = tree.ignored;
    for (auto& below : hashed.ignoredBelow) {
        std::erase_if(below.second, [&](const std::string& pattern) {
            return std::find(hashed.ignored.begin(), hashed.ignored.end(), pattern) !=
                       hashed.ignored.end() ||
                   isWanted(below.first, pattern);
        });
    }
    auto added = MediaHashList::addGenerations(*tree.folder, {}, hashed, tree.withHistory);
    if (added.failure)
        std::rethrow_exception(added.failure);
    return std::move(added.leftOut);
}

} // namespace slatewise::Verify
