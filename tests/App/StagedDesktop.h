#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QVariantMap>

#include <vector>

namespace slatewise::test {

/// A desktop on the session bus: notes what the program shows there, and answers for its user.
class StagedDesktop : public QDBusVirtualObject {
    Q_OBJECT

public:
    StagedDesktop();
    ~StagedDesktop() override;

    /// Has a folder dialog from now on, in which the user chooses that folder, or cancels when it
    /// is empty.
    void offerFolderDialog(const QString& url);

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

    /// What folders were asked for with.
    std::vector<QVariantMap> questions;
    /// Titles and texts.
    QStringList notifications;
    std::vector<double> progress;
    bool isProgressShown = false;

private Q_SLOTS:
    void launcherUpdated(const QString& application, const QVariantMap& properties);

private:
    QDBusConnection bus_;
    QString chosenUrl_;
};

} // namespace slatewise::test
