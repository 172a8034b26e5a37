#include "Views/LaunchWindow.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <chrono>

namespace slatewise::LaunchWindow {

namespace {

/// What the screen leaves to windows. Wayland keeps to itself what panels take of it.
QRect visibleFrame(const QScreen& screen) {
    constexpr int roomForPanels = 64;
    const auto available = screen.availableGeometry();
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"))
               ? available.adjusted(0, 0, 0, -roomForPanels)
               : available;
}

void applyFrame(QQuickWindow& window) {
    const auto* screen = window.screen() ? window.screen() : QGuiApplication::primaryScreen();
    if (!screen)
        return;
    const auto outer = frame(window.frameGeometry(), visibleFrame(*screen));
    window.setGeometry(outer.marginsRemoved(window.frameMargins()));
}

} // namespace

QRect frame(const QRect& frame, const QRect& visible) {
    const int wide = std::min(width, visible.width());
    const int rightmost = visible.x() + visible.width() - wide;
    const int left = std::max(std::min(frame.x(), rightmost), visible.x());
    return {left, visible.y(), wide, visible.height()};
}

void fit(QQuickWindow& window) {
    window.resize(width, fallbackHeight);
    applyFrame(window);
    // A window manager says how wide its borders are some time after it has shown the window, or
    // never, when there are none. Later than this the user may have moved it.
    constexpr std::chrono::milliseconds lookAgain{20};
    constexpr int looks = 100;
    auto* const looking = new QTimer(&window);
    QObject::connect(looking, &QTimer::timeout, &window,
                     [&window, looking, left = looks]() mutable {
                         const bool hasBorders = !window.frameMargins().isNull();
                         if (hasBorders)
                             applyFrame(window);
                         if (hasBorders || --left == 0)
                             looking->deleteLater();
                     });
    looking->start(lookAgain);
}

} // namespace slatewise::LaunchWindow
