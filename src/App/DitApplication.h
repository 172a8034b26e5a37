#pragma once

#include "App/BatchNews.h"
#include "App/DesktopFolderChooser.h"
#include "Model/AppModel.h"

#include <QQmlApplicationEngine>

#include <memory>

class QQuickWindow;

namespace slatewise {

/// The program with its one window: makes the model, shows it, and goes with the window. Lives on
/// the GUI thread, inside a QApplication.
class DitApplication {
public:
    /// `surroundings` without a folder chooser: the window is the one who asks. Throws `Error` when
    /// no store can be opened at all.
    explicit DitApplication(Surroundings surroundings);
    ~DitApplication();

    /// Name, icon and control style; once, before the QApplication is made.
    static void prepare();

    AppModel& model() { return *model_; }
    QQuickWindow& window() { return *window_; }

    /// Leaves a word in the log when the end of the program cuts off a copy.
    void noteEnd() const;

private:
    DesktopFolderChooser chooser_;
    std::unique_ptr<AppModel> model_;
    QQmlApplicationEngine engine_;
    /// Owned by the engine.
    QQuickWindow* window_ = nullptr;
    BatchNews news_;
};

/// Shows why the program cannot start, and waits for the user to close that.
void showStartFailure(const std::string& reason);

} // namespace slatewise
