#pragma once

#include "Language/AppLanguage.h"
#include "Model/Copying/BatchControl.h"
#include "Model/ModelState.h"
#include "Storage/StoreRecords.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>
#include <string>

namespace slatewise {

/// One session's copy, read again from its disk and held against all its lists. One at a time. GUI
/// thread.
class CopyCheck : public QObject {
    Q_OBJECT
    Q_PROPERTY(slatewise::BatchControl::Standing standing READ standing NOTIFY changed)
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY changed)
    Q_PROPERTY(double fraction READ fraction NOTIFY changed)
    Q_PROPERTY(QString percentText READ percentText NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString findings READ findings NOTIFY changed)

public:
    /// `state` outlives this.
    explicit CopyCheck(ModelState& state) : state_(state) {}
    ~CopyCheck() override;

    BatchControl::Standing standing() const { return standing_; }
    bool isBusy() const { return standing_ == BatchControl::Busy; }
    double fraction() const { return fraction_; }
    QString percentText() const;
    /// Where it stands, and in the end its verdict.
    QString title() const { return title_; }
    /// One line for each file that is not what it was, the first few of them.
    QString findings() const { return findings_; }

    /// Nothing while another is at work.
    void start(const HistoryRecord& session);
    Q_INVOKABLE void cancel();

Q_SIGNALS:
    void changed();
    /// The store has the verdict.
    void finished();

private:
    struct Work;

    static QCoro::Task<> run(QPointer<CopyCheck> self, std::shared_ptr<Work> work);
    void show(const OffloadPhase& phase);
    void showEnd(const Work& work);

    ModelState& state_;
    std::shared_ptr<Work> work_;
    BatchControl::Standing standing_ = BatchControl::Resting;
    double fraction_ = 0;
    QString title_;
    QString findings_;
};

/// What a check came to, with its date.
std::string verdictOf(const CheckRecord& check, AppLanguage language);

} // namespace slatewise
