#include "Batch/BatchResult.h"

#include <algorithm>

namespace slatewise {

void PairResult::take(const OffloadOutcome& outcome) {
    const bool isHashed = outcome.status == OutcomeStatus::Hashed;
    const auto wanted = isHashed ? VerifyStatus::Hashed : VerifyStatus::Verified;
    runStatus = outcome.status;
    sessionRoot = outcome.sessionRoot;
    filesDone = static_cast<int>(
        std::count_if(outcome.files.begin(), outcome.files.end(),
                      [&](const auto& row) { return row.verifyStatus == wanted; }));
    if (outcome.status == OutcomeStatus::Verified)
        bytesDone = outcome.bytesCopied;
}

} // namespace slatewise
