#pragma once

#include "Batch/Batch.h"
#include "Batch/ProgressTexts.h"
#include "Batch/TimeLeft.h"
#include "Model/Copying/BatchOutcome.h"
#include "Model/Copying/UnfinishedOffload.h"
#include "Model/ModelState.h"
#include "Model/Volumes/VolumeFollower.h"
#include "Service/ServiceProfileFile.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace slatewise {

/// The button, and how the offload stands: what is looked at before a batch, what is shown of it,
/// and what it leaves behind in the model. GUI thread.
class BatchControl : public QObject, public BatchListener {
    Q_OBJECT
    Q_PROPERTY(bool canCopy READ canCopy NOTIFY canCopyChanged)
    Q_PROPERTY(Standing standing READ standing NOTIFY changed)
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY changed)
    Q_PROPERTY(double fraction READ fraction NOTIFY changed)
    Q_PROPERTY(QString percentText READ percentText NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString pace READ pace NOTIFY changed)
    Q_PROPERTY(bool isRefused READ isRefused NOTIFY changed)
    Q_PROPERTY(QString failedPair READ failedPair NOTIFY changed)
    Q_PROPERTY(QString advice READ advice NOTIFY changed)
    Q_PROPERTY(QString doNotPull READ doNotPull NOTIFY changed)
    Q_PROPERTY(QString lastOffload READ lastOffload NOTIFY changed)
    Q_PROPERTY(bool hasVerdict READ hasVerdict NOTIFY changed)
    Q_PROPERTY(bool hasMore READ hasMore NOTIFY changed)
    Q_PROPERTY(slatewise::OutcomeListModel* pairs READ pairs CONSTANT)
    Q_PROPERTY(slatewise::OutcomeListModel* problems READ problems CONSTANT)
    Q_PROPERTY(QString report READ report NOTIFY changed)

public:
    /// Resting also while the user prepares the next batch, whatever became of the last.
    enum Standing { Resting, Busy, Succeeded, Hashed, Failed };
    Q_ENUM(Standing)

    /// All outlive this.
    BatchControl(ModelState& state, VolumeFollower& volumes, const ServiceProfileFile& profile);
    ~BatchControl() override;

    bool canCopy() const { return canCopy_; }
    Standing standing() const { return shown_.standing; }
    bool isBusy() const { return shown_.standing == Busy; }
    double fraction() const { return shown_.fraction; }
    QString percentText() const { return shown_.percentText; }
    QString title() const { return shown_.title; }
    /// How much is copied of all pairs, and how long they still take.
    QString pace() const { return shown_.pace; }
    /// Whether the title says why nothing came of what the user did.
    bool isRefused() const { return shown_.isRefused; }
    /// Of a failed batch, which card on its way to which disk it failed by.
    QString failedPair() const { return shown_.failedPair; }
    /// What to do about a failure.
    QString advice() const { return shown_.advice; }
    /// Of the cards that were to be ejected and must not be pulled yet.
    QString doNotPull() const { return shown_.doNotPull; }
    /// One quiet line about a batch whose verdict has stepped back, or that ended with the program
    /// the last time.
    QString lastOffload() const { return shown_.lastOffload; }
    /// What is shown is how the last batch ended: its pairs and its problems belong beside it.
    bool hasVerdict() const { return shown_.hasVerdict; }
    /// There is more to be read of the last batch than its verdict, also when that has stepped
    /// back.
    bool hasMore() const { return shown_.hasMore; }
    /// What became of each pair of the last batch, and what it met; kept until the next begins.
    OutcomeListModel* pairs() { return &pairs_; }
    const OutcomeListModel* pairs() const { return &pairs_; }
    OutcomeListModel* problems() { return &problems_; }
    /// All of that as one text.
    QString report() const;
    /// What a notification says below the title's first line: enough to know whether somebody has
    /// to come.
    QStringList news() const;
    /// What came of the batch that ran last; empty before the first and while one runs.
    const std::optional<BatchResult>& lastResult() const { return lastResult_; }
    const OffloadPhase& phase() const { return phase_; }
    const BatchPosition& position() const { return position_; }

    Q_INVOKABLE void start();
    Q_INVOKABLE void cancel();

    void batchBegan(const BatchPlan& plan) override;
    void pairBegan(const BatchPair& pair) override;
    void footageBegan(const std::filesystem::path& folder) override;
    void phaseChanged(const OffloadPhase& phase) override;
    void problemFound(const OffloadProblem&) override {}
    void pairEnded(const BatchPair& pair, const PairResult& result) override;
    void batchEnded(const BatchResult& result) override;

Q_SIGNALS:
    void canCopyChanged();
    void changed();
    /// Of one press of the button, and all that follows it.
    void finished();

private:
    struct Shown {
        Standing standing = Resting;
        double fraction = 0;
        QString percentText;
        QString title;
        QString pace;
        bool isRefused = false;
        QString failedPair;
        QString advice;
        QString doNotPull;
        QString lastOffload;
        bool hasVerdict = false;
        bool hasMore = false;
        friend bool operator==(const Shown&, const Shown&) = default;
    };

    void show();
    void showProgress();
    void showOutcome();
    Shown shownNow() const;
    /// Of the last batch, which has ended.
    void showFailure(Shown& now) const;
    QStringList ejects(bool mayBePulled) const;
    std::string_view button(bool isHashing) const;
    bool isThere(const ClassifiedVolume& card) const;
    QString lastOffloadNow() const;
    BatchPlan plan() const;
    std::optional<Notice> findRefusal(const BatchPlan& plan);
    static QCoro::Task<> showReport(QPointer<BatchControl> self,
                                    std::optional<std::filesystem::path> report);

    ModelState& state_;
    VolumeFollower& volumes_;
    const ServiceProfileFile& profile_;
    OffloadPhase phase_;
    BatchPosition position_;
    /// The batch that ran last, what came of it, and when.
    BatchPlan lastPlan_;
    std::optional<BatchResult> lastResult_;
    Instant lastEnd_;
    OutcomeListModel pairs_;
    OutcomeListModel problems_;
    BatchTimeLeft timeLeft_;
    BatchPace pace_;
    std::optional<UnfinishedOffload> unfinished_;
    std::shared_ptr<Batch> batch_;
    /// The user did not let the last press of the button go on.
    bool wasStopped_ = false;
    bool canCopy_ = false;
    Shown shown_;
};

} // namespace slatewise
