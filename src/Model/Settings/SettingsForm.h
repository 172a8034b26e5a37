#pragma once

#include "Model/ChoiceListModel.h"
#include "Model/ModelState.h"
#include "Model/Volumes/VolumeFollower.h"

#include <QObject>
#include <QString>

namespace slatewise {

/// What the user settles about offloads. Works at once on the next batch; reaches the next start
/// when it is saved, as skip names are with each change. GUI thread.
class SettingsForm : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isPresented READ isPresented WRITE setPresented NOTIFY presentedChanged)
    Q_PROPERTY(QString projectName READ projectName WRITE setProjectName NOTIFY changed)
    Q_PROPERTY(
        bool ejectAfterSuccess READ ejectAfterSuccess WRITE setEjectAfterSuccess NOTIFY changed)
    Q_PROPERTY(bool verifyOnly READ verifyOnly WRITE setVerifyOnly NOTIFY changed)
    Q_PROPERTY(bool writesHashList READ writesHashList WRITE setWritesHashList NOTIFY changed)
    Q_PROPERTY(QString listAuthor READ listAuthor WRITE setListAuthor NOTIFY changed)
    Q_PROPERTY(QString listRole READ listRole WRITE setListRole NOTIFY changed)
    Q_PROPERTY(QString listLocation READ listLocation WRITE setListLocation NOTIFY changed)
    Q_PROPERTY(slatewise::ChoiceListModel* defaultSkipNames READ defaultSkipNames CONSTANT)
    Q_PROPERTY(slatewise::ChoiceListModel* extraExcludes READ extraExcludes CONSTANT)

public:
    /// Both outlive this.
    SettingsForm(ModelState& state, VolumeFollower& volumes);

    bool isPresented() const { return isPresented_; }
    void setPresented(bool presented);
    QString projectName() const;
    void setProjectName(const QString& name);
    bool ejectAfterSuccess() const { return state_.settings.ejectAfterSuccess; }
    void setEjectAfterSuccess(bool eject);
    bool verifyOnly() const { return state_.settings.verifyOnly; }
    void setVerifyOnly(bool verifyOnly);
    bool writesHashList() const { return state_.settings.writesHashList; }
    void setWritesHashList(bool writes);
    QString listAuthor() const;
    void setListAuthor(const QString& author);
    QString listRole() const;
    void setListRole(const QString& role);
    QString listLocation() const;
    void setListLocation(const QString& location);
    /// Names that come with the program; chosen are those that are skipped.
    ChoiceListModel* defaultSkipNames() { return &defaultSkipNames_; }
    ChoiceListModel* extraExcludes() { return &extraExcludes_; }

    Q_INVOKABLE void addSkipName(const QString& name);
    Q_INVOKABLE void removeSkipName(const QString& name);
    Q_INVOKABLE void setDefaultSkip(const QString& name, bool skipped);
    Q_INVOKABLE void save();

Q_SIGNALS:
    void presentedChanged();
    void changed();

private:
    void show();
    void skipNamesEdited();

    ModelState& state_;
    VolumeFollower& volumes_;
    OffloadSettings shown_;
    ChoiceListModel defaultSkipNames_;
    ChoiceListModel extraExcludes_;
    bool isPresented_ = false;
};

} // namespace slatewise
