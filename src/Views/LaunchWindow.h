#pragma once

#include <QRect>

class QQuickWindow;

/// The place of the window at start: a tall column that leaves the rest of the screen to the
/// desktop's own windows.
namespace slatewise::LaunchWindow {

inline constexpr int width = 984;
/// Without a screen to fill.
inline constexpr int fallbackHeight = 900;

/// The launch frame of a window whose frame is `frame`, on a screen that leaves `visible` to
/// windows: as high as that, `width` wide or as much of it as there is, and where the window is,
/// moved only as far as it must to end inside.
QRect frame(const QRect& frame, const QRect& visible);

/// Gives `window` its launch frame, now and once more when it is on the screen and the desktop's
/// decorations around it are known. Without a screen it only gets a size.
void fit(QQuickWindow& window);

} // namespace slatewise::LaunchWindow
