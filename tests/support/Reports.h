#pragma once

#include "Service/OutboxPayload.h"

#include <string>

namespace slatewise {
class AppDatabase;
}

/// Sessions that end up in the outbox.
namespace slatewise::test {

/// A session of the card "A001" that ran from 09:30:15 to 09:30:25 on 2026-03-01 and copied
/// 25,000,000 bytes in `copied` files, with one skipped file at its end.
OffloadOutcome reportedOutcome(OutcomeStatus status, int copied);

/// The record of such an outcome's session, of a card and a disk of no further interest.
SessionManifest manifestOf(const OffloadOutcome& outcome, const std::string& cardName = "A001");

/// What the outbox holds of it.
std::string payloadOf(const SessionManifest& manifest);

/// Puts its report into the store, as the batch does.
void enqueueReport(const OffloadOutcome& outcome, AppDatabase& database,
                   const std::string& cardName = "A001");

} // namespace slatewise::test
