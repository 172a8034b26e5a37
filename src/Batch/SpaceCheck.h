#pragma once

#include "Offload/OffloadError.h"
#include "Volumes/VolumeRecords.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace slatewise::SpaceCheck {

/// Free bytes of the volume that holds a folder; empty when unknown.
using FreeBytes = std::function<std::optional<std::int64_t>(const std::filesystem::path&)>;

/// Looks before a batch begins whether each destination has room for all cards together, with the
/// margin of a run. Gives the first lack of room. Where a size is not known the run decides.
///
/// `freeBytes` is asked only where the volume itself does not promise enough.
std::optional<OffloadError> findLackOfRoom(std::int64_t totalBytes,
                                           std::span<const ClassifiedVolume> destinations,
                                           const FreeBytes& freeBytes);

} // namespace slatewise::SpaceCheck
