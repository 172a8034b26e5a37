#include "Model/Volumes/PickedFolders.h"

#include "Model/StoredList.h"
#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Text.h"

#include <algorithm>

namespace slatewise {

namespace {

constexpr std::string_view kCards = "pickedCardBookmarks";
constexpr std::string_view kDestinations = "pickedDestBookmarks";
constexpr std::string_view kReportsFolder = "reportsFolderBookmark";

using Paths = std::vector<std::filesystem::path>;

Paths pathsOf(std::span<const ClassifiedVolume> volumes) {
    Paths paths;
    for (const auto& volume : volumes)
        paths.push_back(volume.facts.mountPoint);
    return paths;
}

/// A path that is no UTF-8 would come back as another one.
bool canBeStored(const std::filesystem::path& path) {
    return Text::displayable(path.native()) == path.native();
}

void savePaths(UserDefaults& defaults, std::string_view key, const Paths& paths) {
    std::vector<std::string> texts;
    for (const auto& path : paths) {
        if (canBeStored(path))
            texts.push_back(path.native());
    }
    StoredList::save(defaults, key, texts);
}

} // namespace

namespace PickedFolders {

std::filesystem::path normalized(const std::filesystem::path& folder) {
    const auto path = folder.lexically_normal();
    return path.has_filename() || !path.has_relative_path() ? path : path.parent_path();
}

} // namespace PickedFolders

void PickedFolderStore::forgetCards() {
    lastCardPaths_.clear();
    savePaths(defaults_, kCards, {});
}

std::vector<std::filesystem::path> PickedFolderStore::storedDestinations() const {
    const auto stored = StoredList::load(defaults_, kDestinations);
    return {stored.begin(), stored.end()};
}

void PickedFolderStore::persistIfNeeded(std::span<const ClassifiedVolume> cards,
                                        std::span<const ClassifiedVolume> destinations,
                                        std::span<const std::filesystem::path> awaited) {
    auto cardPaths = pathsOf(cards);
    auto destinationPaths = pathsOf(destinations);
    destinationPaths.insert(destinationPaths.end(), awaited.begin(), awaited.end());
    if (cardPaths == lastCardPaths_ && destinationPaths == lastDestinationPaths_)
        return;
    lastCardPaths_ = std::move(cardPaths);
    lastDestinationPaths_ = std::move(destinationPaths);
    savePaths(defaults_, kCards, lastCardPaths_);
    savePaths(defaults_, kDestinations, lastDestinationPaths_);
}

void PickedFolderStore::saveReportsFolder(const std::optional<std::filesystem::path>& folder) {
    if (folder && canBeStored(*folder))
        defaults_.setValue(kReportsFolder, folder->native());
    else
        defaults_.removeValue(kReportsFolder);
}

std::optional<std::filesystem::path> PickedFolderStore::storedReportsFolder() const {
    const auto stored = defaults_.value(kReportsFolder);
    if (!stored || stored->empty())
        return std::nullopt;
    return *stored;
}

} // namespace slatewise
