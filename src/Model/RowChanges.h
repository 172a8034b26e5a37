#pragma once

#include <QAbstractListModel>
#include <QHash>
#include <QMetaProperty>

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace slatewise {

/// What the list models of views have in common. A row is a gadget: its properties are the roles,
/// by their names, and its `key` tells it from the others. A model keeps its rows in a vector, and
/// is a friend of this.
struct RowChanges {
    /// Makes `shown` the rows that are `wanted`, one by one: rows that stay keep their delegates,
    /// and with them the keyboard and their place in sight.
    template <typename Model, typename Row>
    static void bring(Model& model, std::vector<Row>& shown, std::vector<Row> wanted) {
        for (auto row = shown.size(); row-- > 0;) {
            if (find(wanted, 0, shown[row]) == wanted.end())
                remove(model, shown, row);
        }
        for (std::size_t row = 0; row < wanted.size(); ++row)
            place(model, shown, row, std::move(wanted[row]));
        while (shown.size() > wanted.size())
            remove(model, shown, shown.size() - 1);
    }

    template <typename Row>
    static QVariant value(const std::vector<Row>& rows, const QModelIndex& index, int role) {
        const auto row = static_cast<std::size_t>(index.row());
        if (!index.isValid() || row >= rows.size() || role < Qt::UserRole)
            return {};
        return Row::staticMetaObject.property(role - Qt::UserRole).readOnGadget(&rows[row]);
    }

    template <typename Row>
    static QHash<int, QByteArray> roleNames() {
        QHash<int, QByteArray> names;
        for (int property = 0; property < Row::staticMetaObject.propertyCount(); ++property)
            names[Qt::UserRole + property] = Row::staticMetaObject.property(property).name();
        return names;
    }

private:
    template <typename Row>
    static auto find(const std::vector<Row>& rows, std::size_t from, const Row& wanted) {
        return std::find_if(rows.begin() + static_cast<std::ptrdiff_t>(from), rows.end(),
                            [&](const auto& row) { return row.key() == wanted.key(); });
    }

    template <typename Model, typename Row>
    static void remove(Model& model, std::vector<Row>& shown, std::size_t row) {
        const int place = static_cast<int>(row);
        model.beginRemoveRows({}, place, place);
        shown.erase(shown.begin() + place);
        model.endRemoveRows();
    }

    /// Rows above have their places already.
    template <typename Model, typename Row>
    static void place(Model& model, std::vector<Row>& shown, std::size_t row, Row wanted) {
        const int place = static_cast<int>(row);
        const auto found = find(shown, row, wanted);
        if (found == shown.end()) {
            model.beginInsertRows({}, place, place);
            shown.insert(shown.begin() + place, std::move(wanted));
            model.endInsertRows();
            return;
        }
        if (const int from = static_cast<int>(found - shown.begin()); from != place) {
            model.beginMoveRows({}, from, from, {}, place);
            std::rotate(shown.begin() + place, shown.begin() + from, shown.begin() + from + 1);
            model.endMoveRows();
        }
        if (shown[row] == wanted)
            return;
        shown[row] = std::move(wanted);
        const auto changed = model.index(place);
        Q_EMIT model.dataChanged(changed, changed);
    }
};

} // namespace slatewise
