#include "Views/QuickFolderChooser.h"

#include <QDir>
#include <QFile>

#include <utility>

namespace slatewise {

void QuickFolderChooser::choose(const std::string& message, const std::string& prompt,
                                Answer answer) {
    cancel();
    pending_ = std::move(answer);
    Q_EMIT asked(QString::fromStdString(message), QString::fromStdString(prompt),
                 QUrl::fromLocalFile(QDir::homePath()));
}

void QuickFolderChooser::accept(const QUrl& folder) {
    if (!folder.isLocalFile())
        return cancel();
    give(std::filesystem::path(QFile::encodeName(folder.toLocalFile()).toStdString()));
}

void QuickFolderChooser::cancel() {
    give(std::nullopt);
}

void QuickFolderChooser::give(std::optional<std::filesystem::path> folder) {
    // The answer may lead to the next question.
    if (const auto answer = std::exchange(pending_, nullptr))
        answer(std::move(folder));
}

} // namespace slatewise
