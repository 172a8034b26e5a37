#pragma once

#include "Model/ChoiceListModel.h"
#include "Model/ModelState.h"

#include <QObject>
#include <QString>

namespace slatewise {

/// The crews and the camera units, and what a tap on one of them does to a card. GUI thread.
class UnitPicker : public QObject {
    Q_OBJECT
    Q_PROPERTY(slatewise::ChoiceListModel* crews READ crews CONSTANT)
    Q_PROPERTY(slatewise::ChoiceListModel* units READ units CONSTANT)
    Q_PROPERTY(QString title READ title NOTIFY titleChanged)
    Q_PROPERTY(bool canDeleteCrew READ canDeleteCrew NOTIFY deletableChanged)
    Q_PROPERTY(bool canDeleteUnit READ canDeleteUnit NOTIFY deletableChanged)
    Q_PROPERTY(QString newCrewName READ newCrewName WRITE setNewCrewName NOTIFY newNamesChanged)
    Q_PROPERTY(QString newUnitName READ newUnitName WRITE setNewUnitName NOTIFY newNamesChanged)

public:
    /// `state` outlives this.
    explicit UnitPicker(ModelState& state);

    ChoiceListModel* crews() { return &crews_; }
    ChoiceListModel* units() { return &units_; }
    /// Which card a tap is for.
    QString title() const { return title_; }
    /// The last crew stays.
    bool canDeleteCrew() const { return canDeleteCrew_; }
    /// The one that is highlighted.
    bool canDeleteUnit() const { return canDeleteUnit_; }
    QString newCrewName() const { return newCrewName_; }
    void setNewCrewName(const QString& name);
    QString newUnitName() const { return newUnitName_; }
    void setNewUnitName(const QString& name);

    Q_INVOKABLE void tapCrew(const QString& crewID);
    Q_INVOKABLE void tapUnit(const QString& name);
    /// Adds what was typed, and gives it to the card.
    Q_INVOKABLE void addCrew();
    Q_INVOKABLE void addUnit();
    Q_INVOKABLE void deleteCrew();
    Q_INVOKABLE void deleteUnit();

Q_SIGNALS:
    void titleChanged();
    void deletableChanged();
    void newNamesChanged();

private:
    void show();
    QString titleNow() const;
    void giveTargetUnit(const std::string& unit);

    ModelState& state_;
    ChoiceListModel crews_;
    ChoiceListModel units_;
    QString title_;
    bool canDeleteCrew_ = false;
    bool canDeleteUnit_ = false;
    QString newCrewName_;
    QString newUnitName_;
};

} // namespace slatewise
