#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>

#include <filesystem>
#include <functional>

namespace slatewise {

/// The desktop's own folder dialog, asked for over the session bus. One question at a time. GUI
/// thread, which is never held up.
class FolderPortal : public QObject {
    Q_OBJECT

public:
    struct Question {
        /// The dialog's title, and the word on its button.
        QString message;
        QString prompt;
        std::filesystem::path start;
        /// Which window it belongs to, as portals name them; may be empty.
        QString parentWindow;
    };
    enum class End { Chosen, Cancelled, NoDialog };
    /// Called once; the folder is empty unless one was chosen.
    using Answer = std::function<void(End end, std::filesystem::path folder)>;

    using QObject::QObject;

    /// A question that is still open is closed first.
    void ask(Question question, Answer answer);
    /// Takes the dialog away; its question gets no answer any more.
    void close();

private:
    Q_SLOT void responded(uint response, const QVariantMap& results);

    void askWith(const Question& question);
    void give(End end, std::filesystem::path folder = {});

    Answer answer_;
    /// The bus's object for the open question; empty while there is none.
    QString request_;
    int questions_ = 0;
};

} // namespace slatewise
