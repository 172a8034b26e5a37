#include "Benches.h"
#include "Scratch.h"

#include "Storage/AppDatabase.h"

#include <fmt/format.h>

namespace slatewise::bench {

void benchStore(const std::filesystem::path& folder) {
    fmt::print("Saving a session\n");
    for (const int files : {10'000, 100'000}) {
        OffloadOutcome outcome;
        outcome.sessionID = Uuid::random();
        outcome.sessionRoot = "/media/disk/session";
        outcome.status = OutcomeStatus::Verified;
        outcome.startedAt = outcome.finishedAt = Clock::now();
        for (int number = 0; number < files; ++number) {
            auto& row = outcome.files.emplace_back();
            row.relativePath = fmt::format("DCIM/{:03}/A001C{:06}.mov", number / 1000, number);
            row.sizeBytes = number;
            row.mtime = row.created = outcome.startedAt;
            row.action = RowAction::Copy;
            row.verifyStatus = VerifyStatus::Verified;
            row.sourceSHA256 = row.destSHA256 = std::string(64, 'a');
        }
        const auto file = folder / "store.sqlite";
        AppDatabase database(file);
        const auto seconds =
            cpuSeconds([&] { database.save(outcome, outcome.files, "card", "disk", "A"); });
        record("saving a session", fmt::format("{} files", files), "cpu_seconds", seconds);
        fmt::print("  {:>8} files {:8.3f} s CPU\n", files, seconds);
        std::filesystem::remove(file);
    }
    fmt::print("\n");
}

} // namespace slatewise::bench
