#pragma once

#include "Model/Selection.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace slatewise {

/// What the user has said about volumes. Nothing of it outlives the process but the picked
/// destinations, which others store. There is never an id in both override sets.
struct VolumeCorrections {
    VolumeIDs overrideCardIDs;
    VolumeIDs overrideDestIDs;
    /// Mounted volumes that the user took off a list, for as long as they stay mounted.
    VolumeIDs hiddenVolumeIDs;
    /// Picked folders, in the order of picking.
    std::vector<ClassifiedVolume> extraCards;
    std::vector<ClassifiedVolume> extraDestinations;

    friend bool operator==(const VolumeCorrections&, const VolumeCorrections&) = default;
};

/// What is shown and acted on.
struct VolumeLists {
    std::vector<ClassifiedVolume> cards;
    std::vector<ClassifiedVolume> destinations;
    /// By their own kind, whatever the user says of them.
    std::vector<ClassifiedVolume> unknownVolumes;

    friend bool operator==(const VolumeLists&, const VolumeLists&) = default;
};

/// Mounted volumes in their order, then picked folders. What qualifies as both is a card. A picked
/// folder that is the very place of a volume in the same list is not listed twice.
VolumeLists sortVolumes(std::span<const ClassifiedVolume> mounted,
                        const VolumeCorrections& corrections);

/// The destinations that were ticked last, as stored.
struct StoredDestinations {
    std::vector<std::string> ids;
    /// How they were stored once.
    std::optional<std::string> single;
};

/// What to tick where nothing is: what was ticked last, else the only destination there is.
VolumeIDs restoredDestinations(const StoredDestinations& stored,
                               std::span<const ClassifiedVolume> destinations);

/// The volume lists of the application with their ticks, kept true to what is mounted. `apply` may
/// run at any time and as often as one likes; every operation below wants it to run afterwards.
/// Plain data behind plain operations; nothing blocks but the test handed to `apply`.
class VolumeBoard {
public:
    /// What a pass has found.
    struct Applied {
        /// Listed now and not before.
        VolumeIDs appeared;
        /// Cards that were never listed before in this process.
        std::vector<ClassifiedVolume> newCards;
    };
    using ExistsTest = std::function<bool(const std::filesystem::path&)>;

    Applied apply(std::span<const ClassifiedVolume> mounted, const StoredDestinations& stored,
                  const ExistsTest& exists);

    const VolumeLists& lists() const { return lists_; }
    const VolumeCorrections& corrections() const { return corrections_; }
    Selection& cardSelection() { return cardSelection_; }
    const Selection& cardSelection() const { return cardSelection_; }
    Selection& destinationSelection() { return destinationSelection_; }
    const Selection& destinationSelection() const { return destinationSelection_; }

    std::vector<ClassifiedVolume> selectedCards() const;
    std::vector<ClassifiedVolume> selectedDests() const;
    /// The card in focus if it is listed, else the first ticked one, else null.
    const ClassifiedVolume* selectedCard() const;
    bool hasCardFocus() const { return cardSelection_.target().has_value(); }

    void treatAsCard(const std::string& id);
    void treatAsDestination(const std::string& id);
    void removeCard(const ClassifiedVolume& card);
    void removeDestination(const ClassifiedVolume& destination);
    void clearAllCards();
    void clearAllDestinations();

    /// A folder is a card or a destination, whatever it was picked as before.
    void addPickedCard(const ClassifiedVolume& folder);
    void addPickedDestination(const ClassifiedVolume& folder);

    /// Fills in sizes that are not known of a volume yet.
    void applyCapacity(const std::string& id, std::int64_t total, std::int64_t free);

private:
    VolumeCorrections corrections_;
    VolumeLists lists_;
    Selection cardSelection_;
    Selection destinationSelection_;
    VolumeIDs seenCardIDs_;
};

} // namespace slatewise
