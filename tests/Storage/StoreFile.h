#pragma once

#include "Storage/AppDatabase.h"
#include "support/Files.h"
#include "support/Process.h"

#include <gtest/gtest.h>

namespace slatewise::test {

/// The answer of another program, the sqlite3 shell: one line per row, "|" between values.
inline std::string ask(const std::filesystem::path& file, const std::string& query) {
    const auto result = run({"sqlite3", file.native(), query});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    return result.standardOutput;
}

inline OffloadOutcome outcomeAt(const char* startedAt, std::size_t files = 0) {
    OffloadOutcome outcome;
    outcome.sessionID = Uuid::random();
    outcome.sessionRoot = "/media/SSD/2026-03-01/A001";
    outcome.status = OutcomeStatus::Verified;
    outcome.startedAt = *Clock::fromIso8601(startedAt);
    outcome.finishedAt = outcome.startedAt + std::chrono::milliseconds(61'250);
    for (std::size_t number = 0; number < files; ++number) {
        FileCopyResult row;
        row.relativePath = "DCIM/" + std::to_string(number) + ".mov";
        row.sizeBytes = 1'000'000;
        row.mtime = outcome.startedAt;
        row.action = RowAction::Copy;
        row.verifyStatus = VerifyStatus::Verified;
        row.sourceSHA256 = row.destSHA256 = std::string(64, 'a');
        outcome.files.push_back(std::move(row));
    }
    return outcome;
}

inline void save(AppDatabase& database, const OffloadOutcome& outcome, const std::string& card,
                 const std::string& disk, const std::string& camera) {
    database.save(outcome, outcome.files, card, disk, camera);
}

class StoreFile : public ::testing::Test {
protected:
    TemporaryFolder folder;
    std::filesystem::path file = folder / "dit.sqlite";
};

} // namespace slatewise::test
