#pragma once

#include "Model/Volumes/Selection.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace slatewise {

/// The two lists of the window: where footage comes from, and where it goes.
enum class VolumeSide { Card, Destination };

/// What the user has said about volumes. Nothing of it outlives the process but picked destinations
/// and disks to be used as such, which others store. There is never an id in both override sets.
struct VolumeCorrections {
    /// Both sets hold lasting ids: what is said of a disk does not hold for another one that comes
    /// in its place.
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
    /// Those that the user took off a list.
    std::vector<ClassifiedVolume> hidden;

    friend bool operator==(const VolumeLists&, const VolumeLists&) = default;
};

/// Mounted volumes in their order, then picked folders. What qualifies as both is a card. A disk
/// that would be a destination if only one might write to it is listed as one. A picked folder that
/// is the very place of a volume in the same list is not listed twice; one that is the place of a
/// card, listed or taken off the list, is no destination.
VolumeLists sortVolumes(std::span<const ClassifiedVolume> mounted,
                        const VolumeCorrections& corrections);

/// The destinations that were ticked last, by their lasting ids, as stored.
struct StoredDestinations {
    std::vector<std::string> ids;
    /// How they were stored once.
    std::optional<std::string> single;
};

/// What to tick where nothing is: what was ticked last, else the only destination there is, unless
/// it came in place of another disk, by its lasting id. Never one that cannot be written to, nor a
/// mount point on which nothing is mounted.
VolumeIDs restoredDestinations(const StoredDestinations& stored,
                               std::span<const ClassifiedVolume> destinations,
                               const VolumeIDs& replacements);

/// The volume lists of the application with their ticks, kept true to what is mounted. `apply` may
/// run at any time and as often as one likes; every operation below wants it to run afterwards.
/// Plain data behind plain operations; nothing blocks but the test handed to `apply`.
class VolumeBoard {
public:
    /// What a pass has found.
    struct Applied {
        /// Listed now and not before, or something else before.
        VolumeIDs appeared;
        /// Cards that were never listed before in this process.
        std::vector<ClassifiedVolume> newCards;
    };
    using ExistsTest = std::function<bool(const std::filesystem::path&)>;

    Applied apply(std::span<const ClassifiedVolume> mounted, const StoredDestinations& stored,
                  const ExistsTest& exists);

    const VolumeLists& lists() const { return lists_; }
    const std::vector<ClassifiedVolume>& list(VolumeSide side) const;
    const VolumeCorrections& corrections() const { return corrections_; }
    Selection& selection(VolumeSide side);
    const Selection& selection(VolumeSide side) const;
    /// The ticked ones, in the list's order.
    std::vector<ClassifiedVolume> selected(VolumeSide side) const;

    /// The volume of that id in either list, or null.
    const ClassifiedVolume* find(std::string_view id) const;
    /// The card that a unit would be given to, else the first ticked one, else null.
    const ClassifiedVolume* selectedCard() const;

    /// Of the ticked destinations.
    VolumeIDs lastingDestIDs() const;

    /// Lists a mounted volume on that side, also one that was taken off a list.
    void treatAs(VolumeSide side, const std::string& id);
    /// Says of disks that a person wanted them as destinations once. By their lasting ids.
    void treatAsDestinations(const VolumeIDs& lastingIDs);
    /// Those of the disks treated so that can be known again, by their lasting ids.
    VolumeIDs wantedDestIDs() const;
    void remove(VolumeSide side, const ClassifiedVolume& volume);
    void clear(VolumeSide side);

    /// A folder is a card or a destination, whatever it was picked as before.
    void addPicked(VolumeSide side, const ClassifiedVolume& folder);
    /// Says whether it was picked for that side.
    bool dropPicked(VolumeSide side, const ClassifiedVolume& folder);
    /// What is known now of a folder that is picked. Where another folder has come to bear its
    /// path, as when a disk is mounted there, the tick was the other's.
    void replacePicked(VolumeSide side, const ClassifiedVolume& folder);

    /// Fills in sizes that are not known of a volume yet.
    void applyCapacity(const std::string& id, std::int64_t total, std::int64_t free);

private:
    std::vector<ClassifiedVolume>& extras(VolumeSide side);
    VolumeIDs& overrides(VolumeSide side);
    VolumeIDs takeIn(std::span<const ClassifiedVolume> mounted);
    void letGoOf(const VolumeIDs& replaced);
    std::string lastingID(const std::string& id) const;

    VolumeCorrections corrections_;
    VolumeLists lists_;
    Selection cardSelection_;
    /// Nothing works on one destination alone, so that none of them has the focus.
    Selection destinationSelection_;
    /// Lasting ids.
    VolumeIDs seenCardIDs_;
    /// What was mounted last under each id that any volume ever had.
    struct Known {
        std::string lastingID;
        std::optional<FolderIdentity> identity;
    };
    std::map<std::string, Known> known_;
    /// Lasting ids of volumes that came where another one was, be it the same one put in again.
    VolumeIDs replacements_;
};

} // namespace slatewise
