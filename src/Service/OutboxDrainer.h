#pragma once

#include "Service/DirectSaaSClient.h"
#include "Service/SaaSProfile.h"
#include "Storage/AppDatabase.h"

#include <QCoro/QCoroTask>

#include <optional>

namespace slatewise {

/// Delivers the stored reports to the service. Belongs to the GUI thread; whatever is heavy, or
/// waits for the store, happens on workers. A drain goes on when its drainer is gone.
class OutboxDrainer {
public:
    explicit OutboxDrainer(AppDatabase& database, HttpSession::Limits limits = {});

    /// One pass over the reports that are stored when its turn comes, oldest first. A report that
    /// cannot be delivered stays, with the failure counted and named, and holds up none behind it.
    /// Without a profile, or with one that has no account or address, nothing happens at all.
    ///
    /// Drains take turns, those of all drainers and of other programs on the same store: one that
    /// is asked for while another runs starts anew after it. So no report is sent twice but for a
    /// failure on the way. Never fails.
    QCoro::Task<void> drain(std::optional<SaaSProfile> profile) const;

private:
    AppDatabase database_;
    HttpSession::Limits limits_;
};

} // namespace slatewise
