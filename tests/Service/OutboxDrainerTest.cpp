#include "Service/OutboxDrainer.h"

#include "Platform/AppInfo.h"
#include "Platform/Files/FileLock.h"
#include "Platform/Json.h"
#include "Reports/ManifestJSON.h"
#include "Service/DirectSaaSClient.h"
#include "support/Files.h"
#include "support/Offloads.h"
#include "support/RecordingServer.h"
#include "support/Reports.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

namespace {

constexpr HttpSession::Limits kShort{.idle = std::chrono::milliseconds(300)};
const std::string kToken = "s3cret-token";

SaaSProfile profileOf(const std::string& url) {
    return {.accountID = "acc/1", .saasAPIURL = url, .presenceToken = kToken};
}

class Outbox : public ::testing::Test {
protected:
    void drain(const std::string& url, HttpSession::Limits limits = {}) {
        QCoro::waitFor(OutboxDrainer(database, limits).drain(profileOf(url)));
    }
    /// The row's failures and the last of them.
    std::string failures(std::size_t row = 0) {
        const auto rows = database.pendingOutbox();
        return std::to_string(rows.at(row).attempts) + " " + rows[row].lastError.value_or("none");
    }

    AppDatabase database = AppDatabase::inMemory();
};

std::vector<Json::Value> bodies(const RecordingServer& server) {
    std::vector<Json::Value> bodies;
    for (const auto& request : server.requests())
        bodies.push_back(Json::Value::parse(request.body));
    return bodies;
}

/// What a large message is answered, or why it is not.
QCoro::Task<std::string> answerOrFailure(DirectSaaSClient client, std::size_t size) {
    try {
        co_return co_await client.postRaw("/api/x", std::string(size, ' '));
    } catch (const Error& failure) {
        co_return failure.localizedDescription();
    }
}

/// Answers a session's start with an id of the service's own.
WireAnswer likeTheService(const ReceivedRequest& request, std::size_t) {
    const bool isStart = request.line == "POST /api/session/start";
    return WireAnswer::of(200, isStart ? R"({"session_id":"theirs","more":[1]})" : "thanks");
}

} // namespace

TEST(OutboxPayload, IsExactlyThisTextAndReadsBack) {
    auto outcome = reportedOutcome(OutcomeStatus::Failed, 1);
    outcome.sessionID = Uuid();
    outcome.files[0].relativePath = "bad \xff.mov";
    const auto manifest = manifestOf(outcome);
    const auto written = Json::Value::parse(payloadOf(manifest));
    EXPECT_EQ(Json::compactText(written), payloadOf(manifest)) << "in the order of the keys";
    EXPECT_EQ(written["inventoryJSON"], ReportWriter::isoEncode(manifest));
    auto payload = written;
    payload["inventoryJSON"] = R"({"a":"\/"})";
    const std::string text =
        R"({"averageSpeedMBs":2.5,"driveName":"A001","error":"verify failed","files":[)"
        R"({"action":"COPY","fileSize":0,"sourcePath":"\/media\/card\/bad )"
        "\xef\xbf\xbd"
        R"(.mov","targetPath":"\/media\/SSD\/2026-03-01\/A001\/bad )"
        "\xef\xbf\xbd"
        R"(.mov"},{"action":"SKIP","fileSize":0,"sourcePath":"\/media\/card\/.DS_Store",)"
        R"("targetPath":"\/media\/SSD\/2026-03-01\/A001\/.DS_Store"}],)"
        R"("finishedAt":"2026-03-01T09:30:25Z","inventoryJSON":"{\"a\":\"\\\/\"}",)"
        R"("sessionID":"00000000-0000-0000-0000-000000000000",)"
        R"("startedAt":"2026-03-01T09:30:15Z","status":"failed","totalSizeBytes":25000000})";
    EXPECT_EQ(Json::compactText(payload), text);
    const auto read = OutboxPayload::decode(text);
    EXPECT_EQ(read.files.at(1),
              (OutboxFile{"/media/card/.DS_Store", "/media/SSD/2026-03-01/A001/.DS_Store", 0,
                          RowAction::Skip}));
    EXPECT_EQ(read.inventoryJSON, R"({"a":"\/"})");
    EXPECT_EQ(read.finishedAt, outcome.finishedAt);

    for (const auto* key :
         {"sessionID", "files", "startedAt", "inventoryJSON", "averageSpeedMBs"}) {
        auto without = Json::Value::parse(text);
        without.erase(key);
        EXPECT_THROW(OutboxPayload::decode(without.dump()), Error) << key;
    }
    payload["files"] = {1};
    EXPECT_THROW(OutboxPayload::decode(payload.dump()), Error) << "a file that is none";
    for (const auto* none : {"", "{}", "[]", "null", "{\"files\":1}"})
        EXPECT_THROW(OutboxPayload::decode(none), Error) << none;
}

TEST(OutboxPayload, TellsSpeedAndErrorOfEachEnd) {
    auto outcome = reportedOutcome(OutcomeStatus::Verified, 1);
    outcome.finishedAt = outcome.startedAt;
    const auto instantly = OutboxPayload::decode(payloadOf(manifestOf(outcome)));
    EXPECT_DOUBLE_EQ(instantly.averageSpeedMBs, 25'000'000.0 * 1000 / 1'000'000);
    EXPECT_FALSE(instantly.error);
    EXPECT_THAT(payloadOf(manifestOf(outcome)), Not(HasSubstr("\"error\"")));
    outcome.status = OutcomeStatus::Hashed;
    EXPECT_EQ(OutboxPayload::decode(payloadOf(manifestOf(outcome))).error, "verify failed");
}

TEST_F(Outbox, AVerifiedSessionIsToldInThisOrder) {
    RecordingServer server(likeTheService);
    auto outcome = reportedOutcome(OutcomeStatus::Verified, 2);
    outcome.files[1].media.edit().durationSeconds = 24;
    enqueueReport(outcome, database);
    drain(server.url());

    EXPECT_THAT(database.pendingOutbox(), IsEmpty());
    EXPECT_THAT(server.paths(),
                ElementsAre("presence", "session/start", "session/log_file", "dit/inventory",
                            "session/complete", "session/notify_event"));
    for (const auto& request : server.requests()) {
        EXPECT_EQ(request.headers.at("content-type"), "application/json");
        EXPECT_EQ(request.body, Json::compactText(Json::Value::parse(request.body)));
    }
    const auto told = bodies(server);
    EXPECT_EQ(told[0], Json::Value::parse(R"({"account_id":"acc/1","token":")" + kToken +
                                          R"(","role":"source","app_version":")" +
                                          std::string(AppInfo::version) + R"(","hostname":")" +
                                          HttpSession::hostName() + "\"}"));
    EXPECT_EQ(told[1], Json::Value::parse(R"({"account_id":"acc/1","drive_name":"A001",
        "mount_time":"2026-03-01T09:30:15Z","total_size_bytes":25000000,
        "transfer_protocol":"dit"})"));
    EXPECT_EQ(told[2], Json::Value::parse(R"({"session_id":"theirs","entries":[
        {"drive_name":"A001","source_path":"/media/card/DCIM/0.mov",
         "target_path":"/media/SSD/2026-03-01/A001/DCIM/0.mov","file_size":0,"action":"COPY"},
        {"drive_name":"A001","source_path":"/media/card/DCIM/1.mov",
         "target_path":"/media/SSD/2026-03-01/A001/DCIM/1.mov","file_size":1,"action":"COPY"}]})"));
    EXPECT_EQ(told[3]["session_id"], "theirs");
    const auto manifest = ReportWriter::isoDecode(told[3]["inventory"].dump());
    EXPECT_EQ(manifest.sessionID, outcome.sessionID.text());
    ASSERT_THAT(manifest.files, SizeIs(3));
    EXPECT_EQ(manifest.files[1], outcome.files[1]);
    EXPECT_EQ(told[4], Json::Value::parse(R"({"session_id":"theirs","total_size_bytes":25000000,
        "start_time":"2026-03-01T09:30:15Z","end_time":"2026-03-01T09:30:25Z",
        "eject_time":"2026-03-01T09:30:25Z","average_speed_mbs":2.5})"));
    EXPECT_EQ(told[5],
              Json::Value::parse(R"({"session_id":"theirs","event":"end","drive_name":"A001"})"));
}

TEST_F(Outbox, AnyOtherEndIsToldAsAFailure) {
    RecordingServer server; // "{}": no id of its own
    const auto failed = reportedOutcome(OutcomeStatus::Failed, 1);
    enqueueReport(failed, database);
    auto hashed = reportedOutcome(OutcomeStatus::Hashed, 1);
    hashed.files[0].action = RowAction::Hash;
    enqueueReport(hashed, database);
    auto unnamed = Json::Value::parse(payloadOf(manifestOf(hashed)));
    unnamed.erase("error");
    unnamed["inventoryJSON"] = "[1]";
    database.enqueueOutbox("session", unnamed.dump());
    drain(server.url() + "/");

    EXPECT_THAT(server.paths(),
                ElementsAre("presence", "session/start", "session/log_file", "dit/inventory",
                            "session/fail", "session/notify_event", "session/start",
                            "dit/inventory", "session/fail", "session/notify_event",
                            "session/start", "session/fail", "session/notify_event"));
    const auto told = bodies(server);
    EXPECT_EQ(told[4],
              (Json::Value{{"session_id", failed.sessionID.text()}, {"error", "verify failed"}}));
    EXPECT_EQ(told[5], (Json::Value{{"session_id", failed.sessionID.text()},
                                    {"event", "error"},
                                    {"drive_name", "A001"}}));
    EXPECT_EQ(told[8]["error"], "verify failed");
    EXPECT_EQ(told[11]["error"], "DIT offload failed");
    EXPECT_THAT(database.pendingOutbox(), IsEmpty());
}

TEST_F(Outbox, WithoutAProfileNothingHappens) {
    RecordingServer server;
    enqueueReport(reportedOutcome(OutcomeStatus::Verified, 1), database);
    const OutboxDrainer drainer(database);
    QCoro::waitFor(drainer.drain(std::nullopt));
    QCoro::waitFor(drainer.drain(SaaSProfile{"", server.url(), kToken}));
    QCoro::waitFor(drainer.drain(SaaSProfile{"acc", "", kToken}));
    EXPECT_THAT(server.requests(), IsEmpty());
    EXPECT_EQ(failures(), "0 none");
}

TEST_F(Outbox, AReportThatFailsHoldsUpNoneBehindIt) {
    RecordingServer server;
    database.enqueueOutbox("session", "{}");
    auto broken =
        Json::Value::parse(payloadOf(manifestOf(reportedOutcome(OutcomeStatus::Verified, 1))));
    broken["inventoryJSON"] = "{";
    database.enqueueOutbox("session", broken.dump());
    enqueueReport(reportedOutcome(OutcomeStatus::Verified, 0), database);
    drain(server.url());
    EXPECT_THAT(server.paths(),
                ElementsAre("presence", "session/start", "session/log_file", "session/start",
                            "dit/inventory", "session/complete", "session/notify_event"));
    drain(server.url());
    ASSERT_THAT(database.pendingOutbox(), SizeIs(2));
    EXPECT_THAT(failures(0), HasSubstr("2 not a report of a session"));
    EXPECT_EQ(failures(1), "2 the session's inventory is no JSON");
}

TEST_F(Outbox, StatusDecidesAboutEachRequest) {
    const std::vector<std::string> sequence = {"session/start", "session/log_file", "dit/inventory",
                                               "session/complete", "session/notify_event"};
    enqueueReport(reportedOutcome(OutcomeStatus::Verified, 1), database);
    int drains = 0;
    for (const int status : {400, 404, 500, 503}) {
        for (std::size_t failing = 0; failing < sequence.size(); ++failing) {
            RecordingServer server([&](const ReceivedRequest& request, std::size_t) {
                const bool fails = request.line == "POST /api/" + sequence[failing];
                return WireAnswer::of(fails ? status : 200, "{\"echo\":\"" + kToken + "\"}");
            });
            drain(server.url());
            EXPECT_EQ(failures(), std::to_string(++drains) + " /api/" + sequence[failing] +
                                      ": the service answered with status " +
                                      std::to_string(status));
            EXPECT_THAT(server.requests(), SizeIs(failing + 2)) << "nothing after a failure";
        }
    }
    RecordingServer refusesPresenceAlone([](const ReceivedRequest&, std::size_t number) {
        return WireAnswer::of(number == 0 ? 500 : 399);
    });
    drain(refusesPresenceAlone.url());
    EXPECT_THAT(database.pendingOutbox(), IsEmpty());
}

TEST_F(Outbox, ABadLineOnTheWayIsCountedOnceAndNothingIsSentTwice) {
    const struct {
        const char* name;
        WireAnswer start;
        const char* failure;
    } cases[] = {
        {"hangs up", WireAnswer::none(), ""},
        {"says nothing", WireAnswer::silence(), "no answer in time"},
        {"a byte now and then",
         {.bytes = WireAnswer::of(200, std::string(2000, ' ')).bytes,
          .pause = std::chrono::milliseconds(20)},
         "no answer in time"},
        {"breaks off",
         {.bytes = "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{}", .hangsUp = true},
         ""},
        {"no HTTP", {.bytes = "s3cret-token\r\n\r\n", .hangsUp = true}, ""},
        {"no JSON", WireAnswer::of(200, "s3cret-token"), "what a session's start"},
        {"an array", WireAnswer::of(200, "[]"), "no object"},
        {"another type", WireAnswer::of(200, R"({"session_id":["s3cret-token"]})"),
         "what a session's start"},
        {"nothing", WireAnswer::of(200, ""), "what a session's start"},
        {"a flood", WireAnswer::of(200, std::string(3'000'000, ' ') + "{}"), "too large"},
    };
    enqueueReport(reportedOutcome(OutcomeStatus::Verified, 1), database);
    int drains = 0;
    for (const auto& example : cases) {
        RecordingServer server([&](const ReceivedRequest& request, std::size_t) {
            return request.line == "POST /api/session/start" ? example.start : WireAnswer::of(200);
        });
        const auto before = std::chrono::steady_clock::now();
        const bool isLate = std::string_view(example.failure) == "no answer in time";
        drain(server.url(), isLate ? kShort : HttpSession::Limits());
        EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(3));
        EXPECT_THAT(server.paths(), ElementsAre("presence", "session/start")) << example.name;
        EXPECT_THAT(failures(), HasSubstr(std::to_string(++drains) + " "));
        EXPECT_THAT(failures(), HasSubstr(example.failure)) << example.name;
        EXPECT_THAT(failures(), Not(HasSubstr(kToken))) << example.name;
        EXPECT_THAT(failures(), Not(HasSubstr("127.0.0.1"))) << example.name;
    }
}

TEST_F(Outbox, AServerThatDoesNotReadOrIsNotThereEndsInTime) {
    enqueueReport(reportedOutcome(OutcomeStatus::Verified, 1), database);
    const DeafServer deaf;
    const auto answer = [](std::string url) {
        return QCoro::waitFor(answerOrFailure({profileOf(url), kShort}, 64'000'000));
    };
    const HttpSession::Limits fastNetwork{.idle = kShort.idle, .slowestBytesPerSecond = 1e9};
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(answer(deaf.url()), "/api/x: no answer in time");
    drain(deaf.url(), fastNetwork);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
    EXPECT_THAT(failures(), HasSubstr("/api/session/start: no answer in time"));
    EXPECT_THAT(answer("http://127.0.0.1:1"), HasSubstr("/api/x: Connection refused"));
    for (const auto* url :
         {"", "127.0.0.1", "ftp://127.0.0.1", "file:///etc", "http://a b/", "http://u:p@[::1"})
        EXPECT_EQ(answer(url), "/api/x: not a web address") << url;
}

TEST_F(Outbox, ARedirectionIsAnAnswerAndNotFollowed) {
    RecordingServer elsewhere;
    RecordingServer server([&](const ReceivedRequest& request, std::size_t) {
        const auto where = "Location: " + elsewhere.url() + "/api/session/start\r\n";
        return WireAnswer::of(request.line == "POST /api/session/start" ? 200 : 307, "{}", where);
    });
    enqueueReport(reportedOutcome(OutcomeStatus::Verified, 1), database);
    drain(server.url());
    EXPECT_THAT(server.requests(), SizeIs(6));
    EXPECT_THAT(database.pendingOutbox(), IsEmpty());

    RecordingServer moved([&](const ReceivedRequest&, std::size_t) {
        return WireAnswer::of(301, "", "Location: " + elsewhere.url() + "/\r\n");
    });
    enqueueReport(reportedOutcome(OutcomeStatus::Verified, 1), database);
    drain(moved.url());
    EXPECT_THAT(failures(), HasSubstr("1 ")) << "no session was started";
    EXPECT_THAT(elsewhere.requests(), IsEmpty());
}

TEST_F(Outbox, DrainsTakeTurnsWhoeverAskedForThem) {
    RecordingServer server;
    constexpr int kSessions = 3;
    for (int session = 0; session < kSessions; ++session)
        enqueueReport(reportedOutcome(OutcomeStatus::Verified, 0), database);
    std::vector<QCoro::Task<void>> drains;
    for (int drain = 0; drain < 3; ++drain)
        drains.push_back(OutboxDrainer(database).drain(profileOf(server.url())));
    for (auto& drain : drains)
        QCoro::waitFor(drain);
    const auto paths = server.paths();
    EXPECT_EQ(std::count(paths.begin(), paths.end(), "session/start"), kSessions);
    EXPECT_EQ(std::count(paths.begin(), paths.end(), "presence"), 2) << "those that wait are one";
    EXPECT_THAT(database.pendingOutbox(), IsEmpty());
}

TEST(OutboxOfTwoPrograms, IsDrainedByOneAtATime) {
    const TemporaryFolder folder;
    AppDatabase ours(folder / "dit.sqlite");
    AppDatabase theirs(folder / "dit.sqlite");
    RecordingServer server;
    for (int session = 0; session < 20; ++session)
        enqueueReport(reportedOutcome(OutcomeStatus::Verified, 0), ours);
    const OutboxDrainer first(ours);
    const OutboxDrainer second(theirs);
    auto one = first.drain(profileOf(server.url()));
    auto two = second.drain(profileOf(server.url()));
    QCoro::waitFor(one);
    QCoro::waitFor(two);
    const auto paths = server.paths();
    EXPECT_EQ(std::count(paths.begin(), paths.end(), "session/start"), 20);

    enqueueReport(reportedOutcome(OutcomeStatus::Verified, 0), ours);
    const FileLock suspended(folder / "dit.sqlite-outbox.lock", std::chrono::seconds(1));
    const OutboxDrainer impatient(ours, {}, std::chrono::milliseconds(100));
    QCoro::waitFor(impatient.drain(profileOf(server.url())));
    EXPECT_THAT(ours.pendingOutboxIDs(), SizeIs(1)) << "left to whoever holds the outbox";
    // What is in memory may be in the file a moment later.
    SQLite::Database holder((folder / "dit.sqlite").native(), SQLite::OPEN_READWRITE);
    holder.exec("BEGIN EXCLUSIVE");
    auto waiting =
        AppDatabase::openOrWait(folder / "dit.sqlite", {.patience = std::chrono::milliseconds(1),
                                                        .interval = std::chrono::hours(1)});
    enqueueReport(reportedOutcome(OutcomeStatus::Verified, 0), waiting);
    const OutboxDrainer ofMemory(waiting, {}, std::chrono::milliseconds(100));
    QCoro::waitFor(ofMemory.drain(profileOf(server.url())));
    EXPECT_EQ(server.paths().size(), paths.size());
}

TEST(OutboxOfTwoPrograms, WhatTheStoreDoesNotLetGoOfIsSentOnce) {
    const TemporaryFolder folder;
    AppDatabase database(folder / "dit.sqlite");
    SQLite::Database other((folder / "dit.sqlite").native(), SQLite::OPEN_READWRITE);
    other.exec("CREATE TRIGGER full BEFORE DELETE ON outbox BEGIN SELECT RAISE(FAIL, ''); END");
    enqueueReport(reportedOutcome(OutcomeStatus::Verified, 0), database);
    RecordingServer server;
    for (const int left : {1, 1, 0}) {
        if (left == 0)
            other.exec("DROP TRIGGER full");
        QCoro::waitFor(OutboxDrainer(database).drain(profileOf(server.url())));
        const auto rows = database.pendingOutbox();
        ASSERT_THAT(rows, SizeIs(left));
        EXPECT_THAT(rows, Each(Field(&OutboxRecord::attempts, 0))) << "none has failed";
    }
    const auto paths = server.paths();
    EXPECT_EQ(std::count(paths.begin(), paths.end(), "session/start"), 1);
}

TEST_F(Outbox, AStoreThatIsGoneMeanwhileIsNoMatter) {
    RecordingServer server;
    QCoro::Task<void> drained;
    {
        auto shortLived = AppDatabase::inMemory();
        enqueueReport(reportedOutcome(OutcomeStatus::Verified, 0), shortLived);
        drained = OutboxDrainer(shortLived).drain(profileOf(server.url()));
    }
    QCoro::waitFor(drained);
    EXPECT_THAT(server.requests(), SizeIs(5));
}
