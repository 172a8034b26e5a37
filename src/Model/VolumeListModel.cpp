#include "Model/VolumeListModel.h"

#include <algorithm>

namespace slatewise {

void VolumeListModel::setRows(std::vector<VolumeRow> rows) {
    const bool sameVolumes = std::equal(
        rows.begin(), rows.end(), rows_.begin(), rows_.end(),
        [](const auto& left, const auto& right) { return left.volumeID == right.volumeID; });
    if (!sameVolumes) {
        const bool sameCount = rows.size() == rows_.size();
        beginResetModel();
        rows_ = std::move(rows);
        endResetModel();
        if (!sameCount)
            Q_EMIT countChanged();
        return;
    }
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (rows[row] == rows_[row])
            continue;
        rows_[row] = std::move(rows[row]);
        const auto changed = index(static_cast<int>(row));
        Q_EMIT dataChanged(changed, changed);
    }
}

int VolumeListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant VolumeListModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const auto& row = rows_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case VolumeID:
        return row.volumeID;
    case Name:
        return row.name;
    case Subtitle:
        return row.subtitle;
    case Path:
        return row.path;
    case Selected:
        return row.selected;
    case Focused:
        return row.focused;
    case Ekip:
        return row.ekip;
    case Unit:
        return row.unit;
    case NeedsUnit:
        return row.needsUnit;
    case Picked:
        return row.picked;
    default:
        return {};
    }
}

QHash<int, QByteArray> VolumeListModel::roleNames() const {
    return {{VolumeID, "volumeID"},   {Name, "name"},       {Subtitle, "subtitle"}, {Path, "path"},
            {Selected, "selected"},   {Focused, "focused"}, {Ekip, "ekip"},         {Unit, "unit"},
            {NeedsUnit, "needsUnit"}, {Picked, "picked"}};
}

} // namespace slatewise
