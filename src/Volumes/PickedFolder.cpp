#include "Volumes/PickedFolder.h"

namespace slatewise {

ClassifiedVolume pickedFolder(VolumeFacts diskFacts, const std::filesystem::path& folder,
                              VolumeKind kind) {
    ClassifiedVolume volume;
    volume.facts = std::move(diskFacts);
    volume.facts.mountPoint = folder;
    volume.facts.volumeName = folder.has_filename() ? folder.filename().native() : folder.native();
    // Nothing is written to a card.
    if (kind != VolumeKind::Destination)
        volume.facts.writeObstacle = WriteObstacle::None;
    volume.kind = kind;
    volume.reasons = {std::string(pickedReason)};
    return volume;
}

} // namespace slatewise
