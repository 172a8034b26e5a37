#pragma once

#include "Model/RowChanges.h"

#include <QAbstractListModel>
#include <QString>

#include <vector>

namespace slatewise {

class ModelState;
class VolumeFollower;

/// A mounted volume that a person may know better than the program does.
struct OtherVolume {
    Q_GADGET
    Q_PROPERTY(QString volumeID MEMBER volumeID)
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(QString detail MEMBER detail)
    Q_PROPERTY(bool isCard MEMBER isCard)
    Q_PROPERTY(bool isDestination MEMBER isDestination)
    Q_PROPERTY(bool canBeDestination MEMBER canBeDestination)

public:
    /// The bytes of its id, of which each is a character.
    QString volumeID;
    QString name;
    QString detail;
    /// Where it is listed now, if anywhere.
    bool isCard = false;
    bool isDestination = false;
    /// What is a camera card by its content stays one.
    bool canBeDestination = true;

    const QString& key() const { return volumeID; }
    friend bool operator==(const OtherVolume&, const OtherVolume&) = default;
};

/// The volumes that are listed nowhere, those that the user took off a list first, and those that
/// could be on the other list: what a view shows of them, and their way there. The roles are the
/// properties of an `OtherVolume`. GUI thread.
class OtherVolumes : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(bool isPresented READ isPresented WRITE setPresented NOTIFY changed)
    Q_PROPERTY(int count READ rowCount NOTIFY changed)

public:
    /// Both outlive this.
    OtherVolumes(const ModelState& state, VolumeFollower& volumes);

    bool isPresented() const { return isPresented_; }
    void setPresented(bool presented);
    const std::vector<OtherVolume>& rows() const { return rows_; }

    Q_INVOKABLE void useAsCard(const QString& volumeID);
    Q_INVOKABLE void useAsDestination(const QString& volumeID);

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(rows_.size());
    }
    QVariant data(const QModelIndex& index, int role) const override {
        return RowChanges::value(rows_, index, role);
    }
    QHash<int, QByteArray> roleNames() const override {
        return RowChanges::roleNames<OtherVolume>();
    }

Q_SIGNALS:
    void changed();

private:
    friend struct RowChanges;

    void show();

    const ModelState& state_;
    VolumeFollower& volumes_;
    std::vector<OtherVolume> rows_;
    bool isPresented_ = false;
};

} // namespace slatewise
