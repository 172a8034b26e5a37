#pragma once

#include <QAbstractListModel>
#include <QString>

#include <cstddef>
#include <vector>

namespace slatewise {

/// One line of a volume list, ready to be shown.
struct VolumeRow {
    /// By which the model is told which volume is meant.
    QString volumeID;
    QString name;
    QString subtitle;
    QString path;
    bool selected = false;
    bool focused = false;
    /// The crew and the unit of a card; empty when it has none, and for a destination.
    QString ekip;
    QString unit;
    bool needsUnit = false;
    /// A folder that the user picked.
    bool picked = false;

    friend bool operator==(const VolumeRow&, const VolumeRow&) = default;
};

/// The cards or the destinations, as a list view wants them. The roles are named like the fields of
/// a row.
class VolumeListModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        VolumeID = Qt::UserRole,
        Name,
        Subtitle,
        Path,
        Selected,
        Focused,
        Ekip,
        Unit,
        NeedsUnit,
        Picked
    };

    using QAbstractListModel::QAbstractListModel;

    int count() const { return static_cast<int>(rows_.size()); }
    const std::vector<VolumeRow>& rows() const { return rows_; }

    /// Volumes that stay keep their delegates, and with them the keyboard and their place in sight.
    void setRows(std::vector<VolumeRow> rows);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void countChanged();

private:
    void remove(std::size_t row);
    void bring(std::size_t row, VolumeRow shown);

    std::vector<VolumeRow> rows_;
};

} // namespace slatewise
