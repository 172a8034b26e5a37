// Runs the tst_*.qml files beside it.

#include <QQmlEngine>
#include <QQuickStyle>
#include <QtQml/QQmlExtensionPlugin>
#include <QtQuickTest/quicktest.h>

Q_IMPORT_QML_PLUGIN(SlatewiseViewsPlugin)
Q_IMPORT_QML_PLUGIN(SlatewiseStagePlugin)

class Setup : public QObject {
    Q_OBJECT

public:
    Setup() { QQuickStyle::setStyle("Basic"); }

public Q_SLOTS:
    void qmlEngineAvailable(QQmlEngine* engine) { engine->addImportPath("qrc:/qt/qml"); }
};

QUICK_TEST_MAIN_WITH_SETUP(slatewise-views, Setup)

#include "ViewsTest.moc"
