#pragma once

#include "Language/AppLanguage.h"
#include "Model/Copying/BatchControl.h"
#include "Model/Copying/CheckOutcome.h"
#include "Model/ModelState.h"
#include "Storage/StoreRecords.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>
#include <optional>
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
    Q_PROPERTY(bool isDoubtful READ isDoubtful NOTIFY changed)

public:
    /// `state` outlives this.
    explicit CopyCheck(ModelState& state);
    ~CopyCheck() override;

    BatchControl::Standing standing() const;
    bool isBusy() const { return work_ != nullptr; }
    double fraction() const;
    QString percentText() const;
    /// Of which card on which disk, where it stands, and in the end its verdict.
    QString title() const;
    /// One line for each thing that is not as it was, or puts all of it in doubt.
    QString findings() const;
    /// Nothing differs, and what was read may have come from memory.
    bool isDoubtful() const;

    /// Nothing while another is at work.
    void start(const HistoryRecord& session);
    /// Waits a moment for the end, and no longer for a disk that does not answer.
    Q_INVOKABLE void cancel();
    /// Forgets the last one. Nothing while one is at work.
    void clear();

Q_SIGNALS:
    void changed();
    /// One was not stopped; the store was told.
    void finished(const std::string& sessionID, const slatewise::CheckRecord& record);

private:
    struct Work;

    static QCoro::Task<> run(QPointer<CopyCheck> self, std::shared_ptr<Work> work);
    void show(const OffloadPhase& phase);
    void end(Work& work, bool hasEnded);

    ModelState& state_;
    /// In which all is shown.
    AppLanguage language_;
    std::shared_ptr<Work> work_;
    /// "card → disk", of the check at work or of the last one.
    std::string names_;
    OffloadPhase phase_;
    /// Of the last one.
    std::optional<CheckOutcome> outcome_;
};

} // namespace slatewise
