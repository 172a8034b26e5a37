#include "Model/VolumeListModel.h"

#include <algorithm>

namespace slatewise {

namespace {

auto find(const std::vector<VolumeRow>& rows, std::size_t from, const QString& volumeID) {
    return std::find_if(rows.begin() + static_cast<std::ptrdiff_t>(from), rows.end(),
                        [&](const auto& row) { return row.volumeID == volumeID; });
}

} // namespace

void VolumeListModel::setRows(std::vector<VolumeRow> rows) {
    const auto countBefore = rows_.size();
    for (auto row = rows_.size(); row-- > 0;) {
        if (find(rows, 0, rows_[row].volumeID) == rows.end())
            remove(row);
    }
    for (std::size_t row = 0; row < rows.size(); ++row)
        bring(row, std::move(rows[row]));
    while (rows_.size() > rows.size())
        remove(rows_.size() - 1);
    if (rows_.size() != countBefore)
        Q_EMIT countChanged();
}

void VolumeListModel::remove(std::size_t row) {
    const int place = static_cast<int>(row);
    beginRemoveRows({}, place, place);
    rows_.erase(rows_.begin() + place);
    endRemoveRows();
}

/// Rows above have their places already.
void VolumeListModel::bring(std::size_t row, VolumeRow shown) {
    const int place = static_cast<int>(row);
    const auto found = find(rows_, row, shown.volumeID);
    if (found == rows_.end()) {
        beginInsertRows({}, place, place);
        rows_.insert(rows_.begin() + place, std::move(shown));
        endInsertRows();
        return;
    }
    if (const int from = static_cast<int>(found - rows_.begin()); from != place) {
        beginMoveRows({}, from, from, {}, place);
        std::rotate(rows_.begin() + place, rows_.begin() + from, rows_.begin() + from + 1);
        endMoveRows();
    }
    if (rows_[row] == shown)
        return;
    rows_[row] = std::move(shown);
    const auto changed = index(place);
    Q_EMIT dataChanged(changed, changed);
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
