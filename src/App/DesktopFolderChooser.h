#pragma once

#include "Model/FolderChooser.h"
#include "Platform/Desktop/FolderPortal.h"

#include <QTranslator>

#include <memory>

class QFileDialog;
class QWindow;

namespace slatewise {

/// Asks for a folder with the desktop's own dialog, through its portal, and with Qt's where there
/// is none. On the GUI thread, inside a QApplication.
class DesktopFolderChooser : public FolderChooser {
public:
    DesktopFolderChooser();
    ~DesktopFolderChooser() override;

    /// The window that dialogs belong to; outlives this, or is taken back with null.
    void setWindow(QWindow* window) { window_ = window; }

    /// A question that is still open is answered with nothing first.
    void choose(const std::string& message, const std::string& prompt, Answer answer) override;

private:
    void showOwnDialog(const FolderPortal::Question& question);
    void closeOwnDialog();
    void translate();
    void give(std::optional<std::filesystem::path> folder);

    FolderPortal portal_;
    std::unique_ptr<QFileDialog> dialog_;
    QTranslator translator_;
    QWindow* window_ = nullptr;
    Answer pending_;
};

} // namespace slatewise
