#pragma once

#include "Platform/HttpSession.h"
#include "Service/SaaSProfile.h"
#include "Storage/AppDatabase.h"

#include <QCoro/QCoroTask>

#include <chrono>
#include <optional>

namespace slatewise {

/// Delivers the stored reports to the service. Belongs to the GUI thread; whatever is heavy, or
/// waits for the store, happens on workers. A drain goes on when its drainer is gone.
class OutboxDrainer {
public:
    /// How long another program that holds the outbox is waited for. It may be suspended.
    static constexpr std::chrono::seconds kLockPatience{5};

    explicit OutboxDrainer(AppDatabase& database, HttpSession::Limits limits = {},
                           std::chrono::milliseconds lockPatience = kLockPatience);

    /// One pass over the reports that are stored when its turn comes, oldest first. A report that
    /// cannot be delivered stays, with the failure counted and named, and holds up none behind it.
    /// Without a profile, or with one that has no account or address, nothing happens at all. Nor
    /// while another program holds the outbox for too long.
    ///
    /// Drains take turns, those of all drainers and of other programs on the same store: one that
    /// is asked for while another runs starts anew after it, and those that wait for the same turn
    /// are one. So no report is sent twice but for a failure on the way. One that the service has
    /// and that the store does not let go of is only taken off at the next drain of this
    /// program. Never fails.
    QCoro::Task<void> drain(std::optional<SaaSProfile> profile) const;

    /// Waits for the drains of this program that are under way or wait for their turn, no longer
    /// than `patience`. False when some are left; they go on.
    static QCoro::Task<bool> waitForAll(std::chrono::milliseconds patience);

private:
    AppDatabase database_;
    HttpSession::Limits limits_;
    std::chrono::milliseconds lockPatience_;
};

} // namespace slatewise
