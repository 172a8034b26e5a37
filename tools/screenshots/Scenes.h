#pragma once

#include "Stage.h"

#include <QQuickWindow>

#include <functional>
#include <string>

namespace slatewise::test {

/// A point of a user's way, of which a picture is taken.
struct Scene {
    std::string name;
    /// Before the program starts: what it finds stored.
    std::function<void(Stage&)> prepare{};
    /// With the window open, as a user would come to it.
    std::function<void(Stage&)> play{};
    /// What the user does to the window itself, once that stands still.
    std::function<void(QQuickWindow&)> act{};
};

/// Throws for a name that is no scene's.
const Scene& sceneOf(const std::string& name);

} // namespace slatewise::test
