#include "Model/Settings/SettingsForm.h"

#include "Model/QtText.h"
#include "Offload/TreeWalker.h"

namespace slatewise {

SettingsForm::SettingsForm(ModelState& state, VolumeFollower& volumes)
    : state_(state), volumes_(volumes), shown_(state.settings) {
    connect(&state, &ModelState::changed, this, &SettingsForm::show);
}

void SettingsForm::show() {
    std::vector<Choice> defaults;
    for (const auto& name : TreeWalker::defaultSkipNames()) {
        defaults.push_back(
            {toQString(name), toQString(name), {}, state_.settings.isDefaultSkipped(name)});
    }
    defaultSkipNames_.setRows(std::move(defaults));
    std::vector<Choice> extras;
    for (const auto& name : state_.settings.extraExcludes)
        extras.push_back({toQString(name), toQString(name), {}, true});
    extraExcludes_.setRows(std::move(extras));
    if (shown_ == state_.settings)
        return;
    shown_ = state_.settings;
    Q_EMIT changed();
}

void SettingsForm::setPresented(bool presented) {
    if (presented == isPresented_)
        return;
    isPresented_ = presented;
    Q_EMIT presentedChanged();
}

QString SettingsForm::projectName() const {
    return toQString(state_.settings.projectName);
}

void SettingsForm::setProjectName(const QString& name) {
    state_.settings.projectName = name.toStdString();
    state_.publish();
}

void SettingsForm::setEjectAfterSuccess(bool eject) {
    state_.settings.ejectAfterSuccess = eject;
    state_.publish();
}

void SettingsForm::setVerifyOnly(bool verifyOnly) {
    state_.settings.verifyOnly = verifyOnly;
    state_.publish();
}

void SettingsForm::setWritesHashList(bool writes) {
    state_.settings.writesHashList = writes;
    state_.publish();
}

QString SettingsForm::listAuthor() const {
    return toQString(state_.settings.listAuthor);
}

void SettingsForm::setListAuthor(const QString& author) {
    state_.settings.listAuthor = author.toStdString();
    state_.publish();
}

QString SettingsForm::listRole() const {
    return toQString(state_.settings.listRole);
}

void SettingsForm::setListRole(const QString& role) {
    state_.settings.listRole = role.toStdString();
    state_.publish();
}

QString SettingsForm::listLocation() const {
    return toQString(state_.settings.listLocation);
}

void SettingsForm::setListLocation(const QString& location) {
    state_.settings.listLocation = location.toStdString();
    state_.publish();
}

void SettingsForm::addSkipName(const QString& name) {
    const auto before = state_.settings.skipNames();
    state_.settings.addExclude(name.toStdString());
    // Measuring all cards anew may take minutes.
    if (state_.settings.skipNames() != before)
        skipNamesEdited();
}

void SettingsForm::removeSkipName(const QString& name) {
    state_.settings.removeExclude(name.toStdString());
    skipNamesEdited();
}

void SettingsForm::setDefaultSkip(const QString& name, bool skipped) {
    state_.settings.setDefaultSkipped(name.toStdString(), skipped);
    skipNamesEdited();
}

void SettingsForm::skipNamesEdited() {
    save();
    volumes_.measureCardsAnew();
    state_.publish();
}

void SettingsForm::save() {
    state_.settings.save(state_.defaults);
}

} // namespace slatewise
