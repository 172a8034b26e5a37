#pragma once

#include "Model/FolderChooser.h"

#include <QObject>
#include <QString>
#include <QUrl>
#include <qqml.h>

namespace slatewise {

/// Asks for a folder with the desktop's folder dialog, or Qt Quick's own where there is none. The
/// dialog itself is in QML (`FolderChooserDialog`), which this object hands the question and which
/// hands back the answer. On the GUI thread.
class QuickFolderChooser : public QObject, public FolderChooser {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The program makes it.")

public:
    using QObject::QObject;

    /// A question that is still open is answered with nothing first.
    void choose(const std::string& message, const std::string& prompt, Answer answer) override;

    Q_INVOKABLE void accept(const QUrl& folder);
    Q_INVOKABLE void cancel();

Q_SIGNALS:
    void asked(const QString& message, const QString& prompt, const QUrl& start);

private:
    void give(std::optional<std::filesystem::path> folder);

    Answer pending_;
};

} // namespace slatewise
