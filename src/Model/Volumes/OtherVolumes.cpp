#include "Model/Volumes/OtherVolumes.h"

#include "Model/ModelState.h"
#include "Model/QtText.h"
#include "Model/Volumes/VolumeFollower.h"
#include "Offload/PathSize.h"

namespace slatewise {

namespace {

OtherVolume rowOf(const ClassifiedVolume& volume, const VolumeLists& lists, AppLanguage language) {
    const auto id = volume.id();
    auto detail = toQString(volume.facts.mountPoint.native());
    if (volume.facts.totalBytes > 0)
        detail += "  ·  " + toQString(PathSize::format(volume.facts.totalBytes, language));
    return {.volumeID = QString::fromLatin1(id.data(), static_cast<qsizetype>(id.size())),
            .name = toQString(volume.name()),
            .detail = detail,
            .isCard = findVolume(lists.cards, id) != nullptr,
            .isDestination = findVolume(lists.destinations, id) != nullptr,
            .canBeDestination = volume.kind != VolumeKind::CameraCard};
}

} // namespace

OtherVolumes::OtherVolumes(const ModelState& state, VolumeFollower& volumes)
    : state_(state), volumes_(volumes) {
    connect(&state, &ModelState::changed, this, &OtherVolumes::show);
}

void OtherVolumes::setPresented(bool presented) {
    if (presented == isPresented_)
        return;
    isPresented_ = presented;
    Q_EMIT changed();
}

void OtherVolumes::show() {
    const auto& lists = state_.board.lists();
    std::vector<OtherVolume> rows;
    VolumeIDs taken;
    for (const auto* list :
         {&lists.hidden, &lists.unknownVolumes, &lists.destinations, &lists.cards}) {
        for (const auto& volume : *list) {
            // A card that is listed has no other place to go to.
            const bool canMove = !volume.isPickedFolder() &&
                                 (list == &lists.hidden || volume.kind != VolumeKind::CameraCard);
            if (canMove && taken.insert(volume.id()).second)
                rows.push_back(rowOf(volume, lists, state_.language));
        }
    }
    const auto before = rows_.size();
    RowChanges::bring(*this, rows_, std::move(rows));
    if (rows_.size() != before)
        Q_EMIT changed();
}

void OtherVolumes::useAsCard(const QString& volumeID) {
    volumes_.treatAs(VolumeSide::Card, volumeID.toLatin1().toStdString());
}

void OtherVolumes::useAsDestination(const QString& volumeID) {
    volumes_.treatAs(VolumeSide::Destination, volumeID.toLatin1().toStdString());
}

} // namespace slatewise
