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
        auto free = destination.facts.freeBytes;
        // What is known of a disk may be minutes old.
        if (free < needed) {
            const auto now = freeBytes(destination.facts.mountPoint);
            free = now >= 1 ? now : free;
        }
        if (free >= 1 && free < needed)
            return OffloadError(OffloadError::InsufficientSpace{needed, free});
    }
    return std::nullopt;
}

} // namespace slatewise::SpaceCheck
