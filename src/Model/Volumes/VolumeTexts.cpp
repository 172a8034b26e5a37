#include "Model/Volumes/VolumeTexts.h"

#include "Language/L10n.h"
#include "Offload/PathSize.h"

#include <string_view>

namespace slatewise::VolumeTexts {

namespace {

std::string_view obstacleText(WriteObstacle obstacle, L10n l10n) {
    switch (obstacle) {
    case WriteObstacle::ReadOnly:
        return l10n.diskIsReadOnly();
    case WriteObstacle::NoPermission:
        return l10n.mayNotWriteToDisk();
    case WriteObstacle::NoAnswer:
        return l10n.diskDoesNotAnswer();
    case WriteObstacle::None:
        break;
    }
    return {};
}

} // namespace

bool warns(const ClassifiedVolume& volume, VolumeSide side) {
    return side == VolumeSide::Destination && (volume.isBare || !volume.facts.isWritable());
}

std::string subtitle(const ClassifiedVolume& volume, VolumeSide side, const ContentSizes& sizes,
                     L10n l10n) {
    const auto id = volume.id();
    const auto size = [&](std::int64_t bytes) {
        return PathSize::format(bytes, l10n.language());
    };
    const bool isMeasuring = sizes.isMeasuring(id);
    if (side == VolumeSide::Destination) {
        if (const auto obstacle = obstacleText(volume.facts.writeObstacle, l10n); !obstacle.empty())
            return std::string(obstacle);
        if (volume.isBare)
            return std::string(l10n.noDiskMounted());
        // A card's size is what it holds.
        const auto room = [&](std::int64_t bytes) {
            return size(bytes) + " " + std::string(l10n.free());
        };
        if (const auto free = sizes.freeBytes(id))
            return room(*free);
        if (volume.facts.freeBytes >= 1)
            return room(volume.facts.freeBytes);
        return isMeasuring ? std::string(l10n.measuringSize()) : size(0);
    }
    std::string line;
    if (const auto used = sizes.usedBytes(id))
        line = size(*used);
    else if (isMeasuring)
        line = l10n.measuringSize();
    if (volume.isPickedFolder())
        line += (line.empty() ? "" : " · ") + std::string(l10n.folderTag());
    return line;
}

} // namespace slatewise::VolumeTexts
