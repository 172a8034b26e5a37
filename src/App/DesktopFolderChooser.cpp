#include "App/DesktopFolderChooser.h"

#include "Language/L10n.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLibraryInfo>
#include <QWindow>

#include <utility>

namespace slatewise {

namespace {

QString toText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// As portals name a window. Wayland knows no name that could be handed on.
QString portalName(const QWindow* window) {
    if (!window || QGuiApplication::platformName() != "xcb")
        return {};
    return "x11:" + QString::number(window->winId(), 16);
}

} // namespace

DesktopFolderChooser::DesktopFolderChooser() = default;
DesktopFolderChooser::~DesktopFolderChooser() = default;

void DesktopFolderChooser::choose(const std::string& message, const std::string& prompt,
                                  Answer answer) {
    closeOwnDialog();
    give(std::nullopt);
    pending_ = std::move(answer);
    const FolderPortal::Question question = {.message = QString::fromStdString(message),
                                             .prompt = QString::fromStdString(prompt),
                                             .start =
                                                 QFile::encodeName(QDir::homePath()).toStdString(),
                                             .parentWindow = portalName(window_)};
    portal_.ask(question, [this, question](FolderPortal::End end, std::filesystem::path folder) {
        switch (end) {
        case FolderPortal::End::Chosen:
            return give(std::move(folder));
        case FolderPortal::End::Cancelled:
            return give(std::nullopt);
        case FolderPortal::End::NoDialog:
            return showOwnDialog(question);
        }
    });
}

/// It has a button for a new folder, and means the folder it shows while nothing in it is chosen.
void DesktopFolderChooser::showOwnDialog(const FolderPortal::Question& question) {
    translate();
    closeOwnDialog();
    dialog_ = std::make_unique<QFileDialog>(nullptr, question.message, QDir::homePath());
    dialog_->setFileMode(QFileDialog::Directory);
    dialog_->setOption(QFileDialog::ShowDirsOnly);
    dialog_->setLabelText(QFileDialog::Accept, question.prompt);
    dialog_->setLabelText(QFileDialog::Reject, toText(L10n::current().cancel()));
    // Made now, so that the dialog comes up over the window.
    dialog_->winId();
    if (dialog_->windowHandle())
        dialog_->windowHandle()->setTransientParent(window_);
    QObject::connect(dialog_.get(), &QFileDialog::finished, dialog_.get(), [this](int result) {
        const auto chosen = dialog_->selectedFiles();
        if (result != QDialog::Accepted || chosen.isEmpty())
            return give(std::nullopt);
        give(std::filesystem::path(QFile::encodeName(chosen.constFirst()).toStdString()));
    });
    dialog_->open();
}

/// It may be the dialog's own answer that leads to the next question.
void DesktopFolderChooser::closeOwnDialog() {
    if (dialog_)
        dialog_.release()->deleteLater();
}

/// The words that are Qt's own, in the language of the window instead of the machine's.
void DesktopFolderChooser::translate() {
    QCoreApplication::removeTranslator(&translator_);
    const auto code = toText(Language::rawValue(L10n::current().language()));
    if (translator_.load("qtbase_" + code, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&translator_);
}

void DesktopFolderChooser::give(std::optional<std::filesystem::path> folder) {
    // The answer may lead to the next question.
    if (const auto answer = std::exchange(pending_, nullptr))
        answer(std::move(folder));
}

} // namespace slatewise
