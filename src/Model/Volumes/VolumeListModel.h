#pragma once

#include "Model/RowChanges.h"
#include "Model/Volumes/VolumeBoard.h"

#include <QAbstractListModel>
#include <QString>

#include <vector>

namespace slatewise {

class ModelState;
class VolumeFollower;

/// One line of a volume list, ready to be shown.
struct VolumeRow {
    Q_GADGET
    Q_PROPERTY(QString volumeID MEMBER volumeID)
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(QString subtitle MEMBER subtitle)
    Q_PROPERTY(bool warns MEMBER warns)
    Q_PROPERTY(QString path MEMBER path)
    Q_PROPERTY(QString past MEMBER past)
    Q_PROPERTY(bool selected MEMBER selected)
    Q_PROPERTY(bool focused MEMBER focused)
    Q_PROPERTY(QString ekip MEMBER ekip)
    Q_PROPERTY(QString unit MEMBER unit)
    Q_PROPERTY(bool needsUnit MEMBER needsUnit)

public:
    /// By which the model is told which volume is meant: the bytes of its id, of which each is a
    /// character, since two ids may differ in bytes that are no UTF-8.
    QString volumeID;
    QString name;
    QString subtitle;
    /// The subtitle says why nothing should be copied there.
    bool warns = false;
    QString path;
    /// That a card was offloaded before; empty when nobody knows of it.
    QString past;
    bool selected = false;
    /// The card that the unit picker works on.
    bool focused = false;
    /// The crew and the unit of a card; empty when it has none, and for a destination.
    QString ekip;
    QString unit;
    bool needsUnit = false;

    const QString& key() const { return volumeID; }
    friend bool operator==(const VolumeRow&, const VolumeRow&) = default;
};

/// The cards or the destinations: what a view shows of them, and what a user can do with them. The
/// roles are the properties of a `VolumeRow`. GUI thread.
class VolumeListModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(QString totalText READ totalText NOTIFY totalTextChanged)

public:
    /// `state` and `volumes` outlive this.
    VolumeListModel(VolumeSide side, const ModelState& state, VolumeFollower& volumes);

    const std::vector<VolumeRow>& rows() const { return rows_; }
    int count() const { return static_cast<int>(rows_.size()); }
    /// How much there is to copy of what is ticked.
    QString totalText() const { return totalText_; }

    Q_INVOKABLE void toggle(const QString& volumeID);
    /// Makes a card the one that the unit picker works on; nothing for a destination.
    Q_INVOKABLE void focus(const QString& volumeID);
    Q_INVOKABLE void remove(const QString& volumeID);
    Q_INVOKABLE void clear();
    /// Asks for a folder and lists it, ticked.
    Q_INVOKABLE void pickFolder();

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : count();
    }
    QVariant data(const QModelIndex& index, int role) const override {
        return RowChanges::value(rows_, index, role);
    }
    QHash<int, QByteArray> roleNames() const override { return RowChanges::roleNames<VolumeRow>(); }

Q_SIGNALS:
    void totalTextChanged();
    /// The user is to look at that row.
    void rowWanted(int row);

private:
    friend struct RowChanges;

    void show();
    void want(const std::string& id);
    VolumeRow rowOf(const ClassifiedVolume& volume) const;
    QString total() const;

    const VolumeSide side_;
    const ModelState& state_;
    VolumeFollower& volumes_;
    std::vector<VolumeRow> rows_;
    QString totalText_;
};

} // namespace slatewise
