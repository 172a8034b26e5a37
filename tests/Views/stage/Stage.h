#pragma once

#include "support/Desk.h"

#include <QObject>
#include <QString>
#include <qqml.h>

#include <cstdint>
#include <memory>

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

    /// Brings the model to what a user sees at that point of the way.
    Q_INVOKABLE void play(const QString& scene);

    Q_INVOKABLE void plugInCard(const QString& name, double bytes = 1e9);
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

    /// What a batch would tell.
    Q_INVOKABLE void copying(double fraction);
    Q_INVOKABLE void succeed();
    /// The second pair, for folders of the card that could not be read.
    Q_INVOKABLE void fail(int unreadFolders = 1);

private:
    class Disks;

    void add(const QString& name, VolumeKind kind, std::int64_t bytes);
    void playCards();
    void playReady();
    void playCrowded();
    void end(const BatchResult& result);
    void playHistory();
    BatchPlan plan();

    Desk desk_;
    std::shared_ptr<Disks> disks_;
};

} // namespace slatewise::test
