#pragma once

#include "Volumes/VolumeRecords.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace slatewise {

class UserDefaults;

/// Folders that the user picked, as they are remembered from one start to the next.
namespace PickedFolders {

/// Without dots and without a slash at the end, so that one folder has one path.
std::filesystem::path normalized(const std::filesystem::path& folder);

} // namespace PickedFolders

/// The remembered folders, as plain paths under their keys. What cannot be remembered or found
/// again is left out; nothing here fails.
class PickedFolderStore {
public:
    explicit PickedFolderStore(UserDefaults& defaults) : defaults_(defaults) {}

    /// Picked cards do not outlive a process.
    void forgetCards();
    /// The remembered destinations, whether or not they are still there.
    std::vector<std::filesystem::path> storedDestinations() const;

    /// Stores both lists unless they are what was stored last, and with the destinations those that
    /// are still awaited.
    void persistIfNeeded(std::span<const ClassifiedVolume> cards,
                         std::span<const ClassifiedVolume> destinations,
                         std::span<const std::filesystem::path> awaited);

    /// Nothing for the default folder.
    void saveReportsFolder(const std::optional<std::filesystem::path>& folder);
    std::optional<std::filesystem::path> storedReportsFolder() const;

private:
    UserDefaults& defaults_;
    std::vector<std::filesystem::path> lastCardPaths_;
    std::vector<std::filesystem::path> lastDestinationPaths_;
};

} // namespace slatewise
