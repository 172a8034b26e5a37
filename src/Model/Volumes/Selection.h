#pragma once

#include "Volumes/VolumeRecords.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace slatewise {

/// The ticks of one volume list and the one volume in it that has the focus, which need not be
/// ticked. A value.
struct Selection {
    VolumeIDs ids;
    std::optional<std::string> focused;
    /// Ticked by the user after all others; may have been unticked since.
    std::optional<std::string> tickedLast{};

    bool contains(std::string_view id) const { return ids.contains(id); }

    /// Whether the volume is ticked now.
    bool toggle(const std::string& id);
    void tick(const std::string& id);

    /// Any ticked volume gets the focus, or none.
    void focusAny();

    /// What an operation on "the" volume works on: the one in focus, else the one ticked last, else
    /// any that is ticked.
    std::optional<std::string> target() const;

    /// Lets go of volumes that are not in the list any more.
    void keepOnly(std::span<const ClassifiedVolume> volumes);

    /// The ticked ones in the list's order.
    std::vector<ClassifiedVolume> selectedOf(std::span<const ClassifiedVolume> volumes) const;

    friend bool operator==(const Selection&, const Selection&) = default;
};

/// The volume of that id, or null.
const ClassifiedVolume* findVolume(std::span<const ClassifiedVolume> volumes, std::string_view id);

VolumeIDs idsOf(std::span<const ClassifiedVolume> volumes);

} // namespace slatewise
