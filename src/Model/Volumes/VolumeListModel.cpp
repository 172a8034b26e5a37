#include "Model/Volumes/VolumeListModel.h"

#include "Language/L10n.h"
#include "Model/ModelState.h"
#include "Model/QtText.h"
#include "Model/Volumes/VolumeFollower.h"
#include "Model/Volumes/VolumeTexts.h"
#include "Offload/PathSize.h"

namespace slatewise {

namespace {

std::string idOf(const QString& volumeID) {
    return volumeID.toLatin1().toStdString();
}

} // namespace

VolumeListModel::VolumeListModel(VolumeSide side, const ModelState& state, VolumeFollower& volumes)
    : side_(side), state_(state), volumes_(volumes) {
    connect(&state, &ModelState::changed, this, &VolumeListModel::show);
    connect(&state, &ModelState::cardWanted, this, &VolumeListModel::want);
}

void VolumeListModel::want(const std::string& id) {
    const auto found = std::find_if(rows_.begin(), rows_.end(),
                                    [&](const auto& row) { return idOf(row.volumeID) == id; });
    if (side_ == VolumeSide::Card && found != rows_.end())
        Q_EMIT rowWanted(static_cast<int>(found - rows_.begin()));
}

void VolumeListModel::show() {
    std::vector<VolumeRow> rows;
    for (const auto& volume : state_.board.list(side_))
        rows.push_back(rowOf(volume));
    RowChanges::bring(*this, rows_, std::move(rows));
    if (auto now = total(); now != totalText_) {
        totalText_ = std::move(now);
        Q_EMIT totalTextChanged();
    }
}

VolumeRow VolumeListModel::rowOf(const ClassifiedVolume& volume) const {
    const auto id = volume.id();
    const auto& selection = state_.board.selection(side_);
    VolumeRow row;
    row.volumeID = QString::fromLatin1(id.data(), static_cast<qsizetype>(id.size()));
    row.name = toQString(volume.name());
    row.subtitle =
        toQString(VolumeTexts::subtitle(volume, side_, state_.contentSizes, state_.l10n()));
    row.warns = VolumeTexts::warns(volume, side_);
    row.path = toQString(volume.facts.mountPoint.native());
    row.selected = selection.contains(id);
    if (side_ == VolumeSide::Destination)
        return row;
    if (const auto past = state_.pastOffloads.find(id); past != state_.pastOffloads.end())
        row.past = toQString(past->second.text(state_.l10n()));
    row.focused = selection.focused == id;
    row.ekip = toQString(state_.cardUnits.ekipLabel(id));
    row.unit = toQString(state_.cardUnits.cameraLabel(id));
    row.needsUnit = state_.cardUnits.cardsNeedingUnit.contains(id);
    return row;
}

QString VolumeListModel::total() const {
    if (side_ == VolumeSide::Destination)
        return {};
    const auto cards = state_.board.selected(side_);
    if (state_.contentSizes.isMeasuringAny(cards))
        return toQString(state_.l10n().measuringSize());
    return toQString(PathSize::format(state_.contentSizes.totalOf(cards), state_.language));
}

void VolumeListModel::toggle(const QString& volumeID) {
    volumes_.toggle(side_, idOf(volumeID));
}

void VolumeListModel::focus(const QString& volumeID) {
    if (side_ == VolumeSide::Card)
        volumes_.focusCard(idOf(volumeID));
}

void VolumeListModel::remove(const QString& volumeID) {
    volumes_.remove(side_, idOf(volumeID));
}

void VolumeListModel::clear() {
    volumes_.clear(side_);
}

void VolumeListModel::pickFolder() {
    volumes_.pickFolder(side_);
}

} // namespace slatewise
