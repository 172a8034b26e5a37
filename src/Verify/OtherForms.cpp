#include "Verify/OtherForms.h"

#include "MediaHashList/History.h"
#include "Platform/NameForms.h"
#include "Verify/ListedTree.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace slatewise::Verify {

namespace {

using NameForms::SameName;

/// The names of those that are lost and may be there in another form.
template <typename Names, typename NameOf>
std::vector<std::string> lostOf(const Names& names, const ListedTree& tree, NameOf&& nameOf) {
    std::vector<std::string> lost;
    for (const auto& each : names) {
        const std::string& path = nameOf(each);
        if (NameForms::mayHaveForms(path) &&
            !std::ranges::binary_search(tree.entries, path, {}, &InventoryEntry::relativePath))
            lost.push_back(path);
    }
    return lost;
}

std::vector<SameName> inOtherForms(const std::vector<std::string>& lost, const ListedTree& tree,
                                   bool areFolders) {
    std::vector<std::string_view> there;
    for (const auto& entry : tree.entries) {
        if (!lost.empty() && entry.isDirectory == areFolders)
            there.push_back(entry.relativePath);
    }
    return NameForms::inOtherForms(lost, there);
}

/// Whether anybody lists two of these names: whoever does had two files, one of which is lost.
bool areSeveral(const SameName& same, const ListedTree& tree, const std::string& end) {
    auto names = same.lost;
    names.push_back(same.there);
    std::set<int> seen;
    return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
        const auto found = tree.listers.find(name + end);
        return found != tree.listers.end() && !std::ranges::all_of(found->second, [&](int lister) {
                   return seen.insert(lister).second;
               });
    });
}

/// The form in which the nearest history lists it.
std::string nearest(const std::vector<std::string>& names, const ListedTree& tree) {
    return std::ranges::min(names, {}, [&](const std::string& name) {
        const auto found = tree.listers.find(name);
        return found == tree.listers.end() ? ListedTree::kReports : std::ranges::min(found->second);
    });
}

/// A chain grows with each generation, whatever lists of the day before say of it.
bool isChain(const std::string& path, const ListedTree& tree) {
    return std::ranges::any_of(tree.withHistory, [&](const std::string& folder) {
        return path == std::filesystem::path(folder) / MediaHashList::kHistoryFolder /
                           MediaHashList::kChainName;
    });
}

} // namespace

void meetOtherForms(ListedTree& tree) {
    const auto files = lostOf(
        tree.files, tree, [](const auto& file) -> auto& { return file.first; });
    for (const auto& same : inOtherForms(files, tree, false)) {
        if (areSeveral(same, tree, ""))
            continue;
        const bool isOfChain = isChain(same.there, tree);
        for (const auto& listed : same.lost) {
            const auto expected = tree.files.extract(listed);
            if (isOfChain)
                continue;
            auto& all = tree.files[same.there];
            for (const auto& value : expected.mapped()) {
                if (std::find(all.begin(), all.end(), value) == all.end())
                    all.push_back(value);
            }
        }
        if (!isOfChain)
            tree.listedAs.emplace(same.there, nearest(same.lost, tree));
    }
    const auto folders = lostOf(
        tree.folders, tree, [](const auto& path) -> auto& { return path; });
    for (const auto& same : inOtherForms(folders, tree, true)) {
        if (areSeveral(same, tree, "/"))
            continue;
        for (const auto& listed : same.lost)
            tree.folders.erase(listed);
        tree.folders.insert(same.there);
    }
}

} // namespace slatewise::Verify
