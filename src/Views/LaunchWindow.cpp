#include "Views/LaunchWindow.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <QScreen>

#include <algorithm>

namespace slatewise::LaunchWindow {

namespace {

void applyFrame(QQuickWindow& window) {
    const auto* screen = window.screen() ? window.screen() : QGuiApplication::primaryScreen();
    if (!screen)
        return;
    const auto outer = frame(window.frameGeometry(), screen->availableGeometry());
    window.setGeometry(outer.marginsRemoved(window.frameMargins()));
}

} // namespace

QRect frame(const QRect& frame, const QRect& visible) {
    const int rightmost = visible.x() + visible.width() - width;
    const int left = std::max(std::min(frame.x(), rightmost), visible.x());
    return {left, visible.y(), width, visible.height()};
}

void fit(QQuickWindow& window) {
    window.resize(width, fallbackHeight);
    applyFrame(window);
    QObject::connect(
        &window, &QQuickWindow::frameSwapped, &window,
        [&window] {
            if (!window.frameMargins().isNull())
                applyFrame(window);
        },
        static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
}

} // namespace slatewise::LaunchWindow
