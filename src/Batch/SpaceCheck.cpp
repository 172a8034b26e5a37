#include "Batch/SpaceCheck.h"

#include "Offload/CopyEngine.h"

namespace slatewise::SpaceCheck {

std::optional<OffloadError> findLackOfRoom(std::int64_t totalBytes,
                                           std::span<const ClassifiedVolume> destinations,
                                           const FreeBytes& freeBytes) {
    if (totalBytes < 1)
        return std::nullopt;
    const auto needed = totalBytes + CopyEngine::spaceMargin(totalBytes);
    for (const auto& destination : destinations) {
        const auto known = destination.facts.freeBytes;
        if (known >= needed)
            continue;
        // What is known of a disk may be minutes old.
        auto free = freeBytes(destination.facts.mountPoint);
        if (!free && known >= 1)
            free = known;
        if (free && *free < needed)
            return OffloadError(OffloadError::InsufficientSpace{needed, *free, destination.name()});
    }
    return std::nullopt;
}

} // namespace slatewise::SpaceCheck
