#include "App/DitApplication.h"

#include "Language/L10n.h"
#include "Platform/AppInfo.h"
#include "Platform/Desktop/GraphicsHardware.h"
#include "Storage/AppLog.h"
#include "Views/LaunchWindow.h"

#include <QGuiApplication>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QtQml/QQmlExtensionPlugin>

#include <stdexcept>

Q_IMPORT_QML_PLUGIN(SlatewiseViewsPlugin)

namespace slatewise {

namespace {

constexpr auto kViews = "qrc:/qt/qml/SlatewiseViews/";

/// Loads one of the views' windows. What it is made of is compiled in, so that a failure is one of
/// the installation: a Qt module is missing.
QQuickWindow* loadWindow(QQmlApplicationEngine& engine, const QString& name,
                         const QVariantMap& properties) {
    engine.addImportPath("qrc:/qt/qml");
    engine.setInitialProperties(properties);
    engine.load(QUrl(kViews + name));
    auto* root = engine.rootObjects().isEmpty() ? nullptr : engine.rootObjects().constFirst();
    if (auto* window = qobject_cast<QQuickWindow*>(root))
        return window;
    throw std::runtime_error("the window cannot be shown; is a Qt Quick module missing?");
}

Surroundings withChooser(Surroundings surroundings, FolderChooser& chooser) {
    surroundings.folderChooser = &chooser;
    return surroundings;
}

} // namespace

void DitApplication::prepare() {
    // Our controls look the same on every desktop.
    QQuickStyle::setStyle("Basic");
    // A window that a processor has to draw is drawn where it changed, without OpenGL in between:
    // half the memory, and the processor is left to the copy. Whoever asks for a backend gets it.
    if (!GraphicsHardware::isPresent() && qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND"))
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication::setApplicationName(QString::fromUtf8(AppInfo::name.data()));
    QGuiApplication::setApplicationVersion(QString::fromUtf8(AppInfo::version.data()));
    QGuiApplication::setDesktopFileName(QString::fromUtf8(AppInfo::bundleID.data()));
}

DitApplication::DitApplication(Surroundings surroundings)
    : model_(std::make_unique<AppModel>(withChooser(std::move(surroundings), chooser_))),
      window_(
          loadWindow(engine_, "MainWindow.qml", {{"appModel", QVariant::fromValue(model_.get())}})),
      news_(*model_->batch(), *window_) {
    chooser_.setWindow(window_);
    LaunchWindow::fit(*window_);
    window_->show();
}

DitApplication::~DitApplication() = default;

void DitApplication::noteEnd() const {
    if (model_->batch()->isBusy())
        AppLog::append("Uygulama kapandı, kopya yarıda kaldı: " +
                       model_->batch()->title().toStdString());
}

void showStartFailure(const std::string& reason) {
    QQmlApplicationEngine engine;
    const auto texts = L10n::current();
    loadWindow(engine, "StartFailureWindow.qml",
               {{"message", QString::fromStdString(texts.cannotStart(reason))},
                {"buttonText", QString::fromUtf8(texts.done().data())}});
    QGuiApplication::exec();
}

} // namespace slatewise
