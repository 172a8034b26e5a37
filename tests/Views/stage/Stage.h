#pragma once

#include "support/Desk.h"

#include <QObject>
#include <QString>
#include <qqml.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

namespace slatewise::test {

/// The application's own model over volumes that are only told of: for tests of the views, and for
/// pictures of them. A batch that the button begins waits for a disk that does not answer, until it
/// is stopped; scenes tell the model of batches as a batch would. GUI thread.
class Stage : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(slatewise::AppModel* model READ model CONSTANT)

public:
    explicit Stage(QObject* parent = nullptr);
    ~Stage() override;

    AppModel* model() { return &desk_.model(); }

    /// Brings the model to what a user sees when all is "ready", or with the "sheet" of settings or
    /// the "history" open.
    Q_INVOKABLE void play(const QString& scene);
    void playCards();
    void playReady();
    void playHistory();

    /// The UUID is that of its file system.
    Q_INVOKABLE void plugInCard(const QString& name, double bytes = 1e9, const QString& uuid = {});
    /// A card that is there: the desk's folder of that name, with what lies in it.
    void plugInFolder(const QString& name);
    Q_INVOKABLE void plugInDisk(const QString& name, double freeBytes = 1e12);
    /// Something that is neither a card nor a disk to copy to.
    Q_INVOKABLE void plugInUnknown(const QString& name);
    /// Lists show mounts in their order, in which this one then comes first.
    Q_INVOKABLE void moveToTop(const QString& name);
    Q_INVOKABLE void pull(const QString& name);
    Q_INVOKABLE void pullAll();

    /// Ticks a card that is not ticked, and gives it a unit; an empty one leaves it without.
    Q_INVOKABLE void choose(const QString& card, const QString& unit);
    /// The next questions for a folder are answered with one of that name.
    Q_INVOKABLE void answerWith(const QString& name);

    /// What a batch would tell. Its first pair has begun: the card is looked through.
    void begin();
    /// Of the first pair's bytes that share is copied, or hashed.
    Q_INVOKABLE void copying(double share);
    /// The first pair leaves so many notes.
    Q_INVOKABLE void succeed(int notes = 0);
    /// The second pair, for folders of the card that could not be read.
    Q_INVOKABLE void fail(int unreadFolders = 1);
    void fail(std::vector<OffloadProblem> problems, PairFailure failure = PairFailure::Other);

    Desk& desk() { return desk_; }

private:
    class Disks;

    void add(const QString& name, VolumeKind kind, std::int64_t bytes, const QString& uuid = {});
    void end(const BatchResult& result);
    BatchPlan plan();

    Desk desk_;
    std::shared_ptr<Disks> disks_;
    /// Time goes by as the staged batch goes on.
    std::chrono::steady_clock::time_point now_{};
    std::chrono::steady_clock::time_point pairBegan_{};
};

} // namespace slatewise::test
