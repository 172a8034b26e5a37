#include "Platform/Json.h"
#include "Storage/AppDatabase.h"
#include "support/Files.h"
#include "support/Process.h"
#include "support/RecordingServer.h"
#include "support/Reports.h"

#include <gmock/gmock.h>

#include <atomic>
#include <csignal>
#include <random>

using namespace slatewise;
using namespace slatewise::test;

namespace {

constexpr int kReports = 150;

/// The number of each report whose end was told, in the order of telling.
std::vector<int> endsTold(const RecordingServer& server) {
    std::vector<int> ends;
    for (const auto& request : server.requests()) {
        if (request.line != "POST /api/session/notify_event")
            continue;
        const auto name = Json::Value::parse(request.body).at("drive_name").get<std::string>();
        ends.push_back(std::stoi(name));
    }
    return ends;
}

} // namespace

TEST(OutboxOfAProgramThatIsKilled, ArrivesWholeAndOldestFirst) {
    // Who is killed leaves the system's memory as it was: no disk has a part in this.
    const TemporaryFolder folder(scratchFolderInMemory());
    const auto store = folder / "dit.sqlite";
    AppDatabase database(store);
    const auto outcome = reportedOutcome(OutcomeStatus::Verified, 1);
    for (int report = 0; report < kReports; ++report)
        enqueueReport(outcome, database, std::to_string(report));

    std::mt19937 random(2026);
    std::uniform_int_distribution<std::size_t> requestsToLive(1, 60);
    std::atomic<pid_t> program = 0;
    std::atomic<std::size_t> deadline = requestsToLive(random);
    RecordingServer server([&](const ReceivedRequest&, std::size_t number) {
        if (number >= deadline) {
            deadline = number + requestsToLive(random);
            // It may ask before this test knows its number. Nobody's is everybody's.
            program.wait(0);
            ::kill(program.exchange(0), SIGKILL);
        }
        return WireAnswer::of(200);
    });

    int kills = 0;
    for (; !database.pendingOutboxIDs().empty() && kills < kReports; ++kills) {
        const auto result = run({programsFolder() / "slatewise-drain-once", store, server.url()},
                                {}, [&](pid_t process) {
                                    program = process;
                                    program.notify_all();
                                });
        if (result.exitCode == 0)
            break;
        ASSERT_EQ(result.exitCode, 128 + SIGKILL) << result.standardError;
    }
    EXPECT_GT(kills, 10);
    EXPECT_TRUE(database.pendingOutboxIDs().empty());
    auto ends = endsTold(server);
    EXPECT_TRUE(std::is_sorted(ends.begin(), ends.end()));
    EXPECT_LE(ends.size(), static_cast<std::size_t>(kReports + kills))
        << "only the report under way is told again";
    ends.erase(std::unique(ends.begin(), ends.end()), ends.end());
    EXPECT_EQ(ends.size(), static_cast<std::size_t>(kReports));
}
