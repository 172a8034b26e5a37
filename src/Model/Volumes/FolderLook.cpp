#include "Model/Volumes/FolderLook.h"

#include "Volumes/PickedFolder.h"

namespace slatewise {

ClassifiedVolume FolderLook::at(const std::filesystem::path& folder, VolumeSide side) const {
    const bool isCard = side == VolumeSide::Card;
    auto picked = pickedFolder(facts_ ? facts_(folder) : VolumeFacts(), folder,
                               isCard ? VolumeKind::CameraCard : VolumeKind::Destination);
    picked.isBare = isBare(folder, side);
    return picked;
}

std::optional<ClassifiedVolume> FolderLook::change(const ClassifiedVolume& known,
                                                   VolumeSide side) const {
    const auto& folder = known.facts.mountPoint;
    const auto& before = known.facts.identity;
    const auto now = before ? FolderIdentity::at(folder) : std::nullopt;
    const bool isOther = now && !now->isSame(*before);
    if (!isOther && isBare(folder, side) == known.isBare)
        return std::nullopt;
    return at(folder, side);
}

bool FolderLook::isBare(const std::filesystem::path& folder, VolumeSide side) const {
    return side == VolumeSide::Destination && isBare_ && isBare_(folder);
}

} // namespace slatewise
