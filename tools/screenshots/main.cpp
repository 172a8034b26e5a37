// Draws the window in one state of a staged model: slatewise-screenshots SCENE LANGUAGE PALETTE
// FILE [WIDTH HEIGHT]. The scale is Qt's own (QT_SCALE_FACTOR).

#include "Scenes.h"

#include <QGuiApplication>
#include <QPalette>
#include <QQmlApplicationEngine>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QTimer>
#include <QtQml/QQmlExtensionPlugin>

#include <cstdio>

Q_IMPORT_QML_PLUGIN(SlatewiseViewsPlugin)

namespace {

/// Long enough for every fade to end, and for a hint to come up.
constexpr int kSettledMilliseconds = 900;

void useDarkPalette() {
    QPalette palette;
    palette.setColor(QPalette::Window, Qt::black);
    palette.setColor(QPalette::WindowText, Qt::white);
    QGuiApplication::setPalette(palette);
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): whoever takes pictures may see it end.
int main(int count, char** words) {
    QQuickStyle::setStyle("Basic");
    QGuiApplication application(count, words);
    const auto arguments = QGuiApplication::arguments();
    if (arguments.size() != 5 && arguments.size() != 7) {
        (void)std::fputs(
            "usage: slatewise-screenshots SCENE LANGUAGE light|dark FILE [WIDTH HEIGHT]\n", stderr);
        return 2;
    }
    if (arguments.at(3) == "dark")
        useDarkPalette();

    const auto& scene = slatewise::test::sceneOf(arguments.at(1).toStdString());
    slatewise::test::Stage stage;
    if (scene.prepare)
        scene.prepare(stage);
    stage.model()->setLanguageCode(arguments.at(2));

    QQmlApplicationEngine engine;
    engine.addImportPath("qrc:/qt/qml");
    engine.setInitialProperties({{"appModel", QVariant::fromValue(stage.model())}});
    engine.load(QUrl("qrc:/qt/qml/SlatewiseViews/MainWindow.qml"));
    if (engine.rootObjects().isEmpty())
        return 1;
    auto* window = qobject_cast<QQuickWindow*>(engine.rootObjects().constFirst());
    const bool sized = arguments.size() == 7;
    window->resize(sized ? arguments.at(5).toInt() : 984, sized ? arguments.at(6).toInt() : 900);
    window->show();
    // As a user would come to it: what happens before the window is there scrolls nothing.
    if (scene.play)
        scene.play(stage);
    if (scene.act)
        QTimer::singleShot(kSettledMilliseconds, window, [&] { scene.act(*window); });
    QTimer::singleShot((scene.act ? 2 : 1) * kSettledMilliseconds, window,
                       [window, file = arguments.at(4)] {
                           QGuiApplication::exit(window->grabWindow().save(file) ? 0 : 1);
                       });
    return QGuiApplication::exec();
}
