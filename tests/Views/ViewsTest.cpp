// Runs the tst_*.qml files beside it.

#include <QAccessible>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPalette>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QStyleHints>
#include <QtQml/QQmlExtensionPlugin>
#include <QtQuickTest/quicktest.h>

Q_IMPORT_QML_PLUGIN(SlatewiseViewsPlugin)
Q_IMPORT_QML_PLUGIN(SlatewiseStagePlugin)

/// What a desktop does that QML's test functions cannot.
class Desktop : public QObject {
    Q_OBJECT

public:
    Q_INVOKABLE static void setDark(bool dark) {
        QPalette palette;
        palette.setColor(QPalette::Window, dark ? Qt::black : Qt::white);
        palette.setColor(QPalette::WindowText, dark ? Qt::white : Qt::black);
        QGuiApplication::setPalette(palette);
    }

    /// How a screen reader, which comes up now, announces an item: its role, name, and whether it
    /// is checked.
    Q_INVOKABLE static QVariantList spoken(QQuickItem* item) {
        QAccessible::setActive(true);
        const auto* said = QAccessible::queryAccessibleInterface(item);
        return {static_cast<int>(said->role()), said->text(QAccessible::Name),
                static_cast<bool>(said->state().checked)};
    }

    /// A key that is kept down until it has repeated itself `times` times.
    Q_INVOKABLE static void holdKey(QQuickWindow* window, int key, int times) {
        const auto send = [window, key](QEvent::Type type, bool isRepeat) {
            QKeyEvent event(type, key, Qt::NoModifier, QString(), isRepeat);
            QCoreApplication::sendEvent(window, &event);
        };
        send(QEvent::KeyPress, false);
        for (int time = 0; time < times; ++time) {
            send(QEvent::KeyRelease, true);
            send(QEvent::KeyPress, true);
        }
        send(QEvent::KeyRelease, false);
    }
};

class Setup : public QObject {
    Q_OBJECT

public:
    Setup() { QQuickStyle::setStyle("Basic"); }

public Q_SLOTS:
    static void applicationAvailable() {
        // Copy and Stop take no click for as long after they changed places.
        constexpr int kMilliseconds = 100;
        QGuiApplication::styleHints()->setMouseDoubleClickInterval(kMilliseconds);
    }
    void qmlEngineAvailable(QQmlEngine* engine) {
        engine->addImportPath("qrc:/qt/qml");
        engine->rootContext()->setContextProperty("desktop", &desktop_);
    }

private:
    Desktop desktop_;
};

QUICK_TEST_MAIN_WITH_SETUP(slatewise - views, Setup)

#include "ViewsTest.moc"
