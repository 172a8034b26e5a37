#include "Storage/StoreFile.h"

#include "support/Waiting.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>

#include <atomic>
#include <thread>

using namespace slatewise;
using namespace slatewise::test;
using ::testing::SizeIs;

namespace {

/// The store as its first version left it, with one session.
constexpr const char* kFirstVersion = R"sql(
    CREATE TABLE grdb_migrations (identifier TEXT NOT NULL PRIMARY KEY);
    INSERT INTO grdb_migrations VALUES ('v1');
    CREATE TABLE sessions (id TEXT PRIMARY KEY, cardName TEXT NOT NULL, destName TEXT NOT NULL,
        sessionRoot TEXT NOT NULL, status TEXT NOT NULL, bytesCopied INTEGER NOT NULL DEFAULT 0,
        startedAt DATETIME NOT NULL, finishedAt DATETIME);
    CREATE TABLE files (id INTEGER PRIMARY KEY AUTOINCREMENT,
        sessionID TEXT NOT NULL REFERENCES sessions(id) ON DELETE CASCADE,
        relativePath TEXT NOT NULL, sizeBytes INTEGER NOT NULL, mtime DATETIME, created DATETIME,
        action TEXT NOT NULL, sourceSHA256 TEXT, destSHA256 TEXT, verifyStatus TEXT NOT NULL);
    CREATE INDEX index_files_on_sessionID ON files(sessionID);
    CREATE TABLE activity_events (id INTEGER PRIMARY KEY AUTOINCREMENT, sessionID TEXT,
        event TEXT NOT NULL, detail TEXT NOT NULL DEFAULT '', createdAt DATETIME NOT NULL);
    CREATE TABLE outbox (id INTEGER PRIMARY KEY AUTOINCREMENT, kind TEXT NOT NULL,
        payload TEXT NOT NULL, attempts INTEGER NOT NULL DEFAULT 0, lastError TEXT,
        createdAt DATETIME NOT NULL);
    INSERT INTO sessions VALUES ('old', 'A001', 'SSD', '/s', 'verified', 7,
        '2025-01-02 03:04:05.678', NULL);
    INSERT INTO files (sessionID, relativePath, sizeBytes, action, verifyStatus)
        VALUES ('old', 'a.mov', 7, 'COPY', 'verified');
)sql";

} // namespace

TEST_F(StoreFile, HasTheSchemaThatOtherVersionsRead) {
    { const AppDatabase database(file); }
    EXPECT_EQ(ask(file, "SELECT identifier FROM grdb_migrations ORDER BY rowid"),
              "v1\nv2-camera-label\nv3-timecode\nv4-history\nv5-card\nv6-outbox-pieces\n"
              "v7-check-memory\n");
    EXPECT_EQ(ask(file, "SELECT name, type, \"notnull\", dflt_value, pk "
                        "FROM pragma_table_info('sessions')"),
              "id|TEXT|0||1\ncardName|TEXT|1||0\ndestName|TEXT|1||0\nsessionRoot|TEXT|1||0\n"
              "status|TEXT|1||0\nbytesCopied|INTEGER|1|0|0\nstartedAt|DATETIME|1||0\n"
              "finishedAt|DATETIME|0||0\ncameraLabel|TEXT|1|''|0\n");
    EXPECT_EQ(ask(file, "SELECT name || ' ' || type || ' ' || \"notnull\" "
                        "FROM pragma_table_info('files')"),
              "id INTEGER 0\nsessionID TEXT 1\nrelativePath TEXT 1\nsizeBytes INTEGER 1\n"
              "mtime DATETIME 0\ncreated DATETIME 0\naction TEXT 1\nsourceSHA256 TEXT 0\n"
              "destSHA256 TEXT 0\nverifyStatus TEXT 1\ntimecodeStart TEXT 0\ntimecodeEnd TEXT 0\n"
              "durationTC TEXT 0\ndurationSeconds DOUBLE 0\ncaptureFps DOUBLE 0\n"
              "timecodeRate DOUBLE 0\ntimecodeDropFrame BOOLEAN 0\n");
    EXPECT_EQ(ask(file, "SELECT \"table\", on_delete FROM pragma_foreign_key_list('files')"),
              "sessions|CASCADE\n");
    EXPECT_EQ(ask(file, "SELECT tbl_name FROM sqlite_master "
                        "WHERE name = 'index_files_on_sessionID'"),
              "files\n");
}

TEST_F(StoreFile, AnOldStoreIsBroughtUpToDateWithItsRows) {
    ask(file, kFirstVersion);
    ask(file, "INSERT INTO files (sessionID, relativePath, sizeBytes, action, verifyStatus) "
              "VALUES ('gone', 'b.mov', 7, 'COPY', 'verified'); INSERT INTO sessions VALUES "
              "(NULL, 'X', 'Y', '/x', 'failed', 0, '2024-01-01 00:00:00.000', NULL)");
    std::filesystem::permissions(file, std::filesystem::perms(0644));
    AppDatabase database(file);
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0600));
    EXPECT_EQ(ask(file, "DELETE FROM sessions WHERE id IS NULL; SELECT count(*) FROM files"),
              "1\n");
    const auto sessions = database.recentSessions(20);
    ASSERT_THAT(sessions, SizeIs(1));
    EXPECT_EQ(sessions[0].cameraLabel, "");
    EXPECT_EQ(sessions[0].startedAt,
              *Clock::fromIso8601("2025-01-02T03:04:05Z") + std::chrono::milliseconds(678));
    EXPECT_FALSE(sessions[0].finishedAt);
    ask(file, "UPDATE sessions SET status = 'of another version'");
    EXPECT_EQ(database.recentSessions(20).at(0).status, OutcomeStatus::Failed);
    save(database, outcomeAt("2026-03-01T09:30:15Z", 1), "B001", "SSD", " A/B\n");
    EXPECT_EQ(ask(file, "SELECT count(*), sum(timecodeStart IS NULL) FROM files"), "2|2\n");
    EXPECT_EQ(ask(file, "SELECT cameraLabel FROM sessions WHERE cardName = 'B001'"), "A-B\n");
}

TEST_F(StoreFile, TwoAtOnceOpenAFreshFile) {
    for (int round = 0; round < 10; ++round) {
        std::filesystem::remove(file);
        std::vector<std::jthread> openers;
        std::atomic<int> opened = 0;
        for (int opener = 0; opener < 4; ++opener) {
            openers.emplace_back([&] {
                const AppDatabase database(file);
                ++opened;
            });
        }
        openers.clear();
        EXPECT_EQ(opened, 4);
        EXPECT_EQ(ask(file, "SELECT count(*) FROM grdb_migrations"), "7\n");
    }
}

TEST_F(StoreFile, SavesAllOfASessionOrNothing) {
    AppDatabase database(file);
    auto outcome = outcomeAt("2026-03-01T09:30:15Z", 2);
    outcome.files[1].relativePath = "bad \xff name";
    outcome.files[1].media.edit().timecodeDropFrame = true;
    outcome.files[1].media.edit().durationSeconds = 2.5;
    outcome.bytesCopied = 12;
    save(database, outcome, "A001", "SSD", "CamA");
    EXPECT_ANY_THROW(save(database, outcome, "again", "SSD", "CamA"));
    const QueuedReport broken = {"session", [](const auto& put) {
                                     put("{");
                                     throw std::runtime_error("no more of it");
                                 }};
    EXPECT_ANY_THROW(
        database.save(outcomeAt("2026-03-02T09:30:15Z"), {}, "B002", "SSD", "", {}, &broken));
    EXPECT_EQ(ask(file, "SELECT count(*) FROM outbox"), "0\n");

    EXPECT_EQ(ask(file, "SELECT cardName, destName, cameraLabel, sessionRoot, status, bytesCopied, "
                        "startedAt, finishedAt FROM sessions"),
              "A001|SSD|CamA|/media/SSD/2026-03-01/A001|verified|12|2026-03-01 09:30:15.000|"
              "2026-03-01 09:31:16.250\n");
    EXPECT_EQ(ask(file, "SELECT id, relativePath, mtime, created, timecodeDropFrame, "
                        "durationSeconds FROM files"),
              "1|DCIM/0.mov|2026-03-01 09:30:15.000|||\n"
              "2|bad \xef\xbf\xbd name|2026-03-01 09:30:15.000||1|2.5\n");
    EXPECT_EQ(ask(file, "SELECT sessionID = (SELECT id FROM sessions), event, detail "
                        "FROM activity_events"),
              "1|offload_verified|2 dosya, 12 byte\n");

    outcome = outcomeAt("2026-03-01T09:30:15Z");
    outcome.status = OutcomeStatus::Hashed;
    save(database, outcome, "A001", "SSD", "");
    EXPECT_EQ(ask(file, "SELECT event, detail FROM activity_events WHERE id = 2"),
              "offload_failed|0 dosya, 0 byte\n");
}

TEST_F(StoreFile, OutboxKeepsItsOrderAndCountsFailures) {
    AppDatabase database(file);
    for (const auto* payload : {"1", "2", "3"})
        database.enqueueOutbox("session", payload);
    database.bumpOutbox(1, "no route");
    database.bumpOutbox(1, "time-out");
    database.deleteOutbox(2);
    database.bumpOutbox(2, "gone");
    database.deleteOutbox(99);
    const auto rows = database.pendingOutbox();
    ASSERT_THAT(rows, SizeIs(2));
    EXPECT_EQ(rows[0].payload, "1");
    EXPECT_EQ(rows[0].attempts, 2);
    EXPECT_EQ(rows[0].lastError, "time-out");
    EXPECT_EQ(rows[1].payload, "3");
    EXPECT_EQ(rows[1].kind, "session");
    EXPECT_FALSE(rows[1].lastError);

    // A text that is never held whole, but by this test.
    const auto piece = bytesOf(1 << 20);
    std::string whole;
    database.enqueueOutbox(
        {"session", [&](const auto& put) {
             whole.clear();
             for (int number = 0; number < 17; ++number)
                 put(whole.insert(whole.size(), piece).substr(whole.size() - piece.size()));
         }});
    EXPECT_EQ(database.outboxRow(4)->payload, whole);
    EXPECT_EQ(ask(file, "SELECT typeof(payload), count(*) FROM outbox JOIN outbox_pieces ON "
                        "outbox.id = outboxID"),
              "text|5\n");
}

TEST(AppDatabase, GivesTheLatestSessionsLatestFirst) {
    auto database = AppDatabase::inMemory();
    for (int day = 1; day <= 25; ++day) {
        const auto text = "2026-03-" + std::string(day < 10 ? "0" : "") + std::to_string(day);
        save(database, outcomeAt((text + "T00:00:00Z").c_str()), text, "SSD", "");
    }
    const auto sessions = database.recentSessions(20);
    ASSERT_THAT(sessions, SizeIs(20));
    EXPECT_EQ(sessions.front().cardName, "2026-03-25");
    EXPECT_EQ(sessions.back().cardName, "2026-03-06");
}

TEST_F(StoreFile, WhatHappensWhileTheFileIsHeldIsMovedThere) {
    using namespace std::chrono_literals;
    AppDatabase(file).enqueueOutbox("session", "earlier");
    std::optional<SQLite::Database> holder(std::in_place, file.native(), SQLite::OPEN_READWRITE);
    holder->exec("BEGIN EXCLUSIVE");
    const auto open = [&] {
        return AppDatabase::openOrWait(file, {.patience = 1ms, .interval = 20ms});
    };
    auto database = open();
    EXPECT_EQ(database.file(), "");
    const auto outcome = outcomeAt("2026-03-01T09:30:15Z", 2);
    const auto session = outcome.sessionID.text();
    save(database, outcome, "A001", "SSD", "CamA");
    for (const auto* payload : {"1", "2"})
        database.enqueueOutbox("session", payload);
    const auto pending = database.pendingOutboxIDs();
    ASSERT_THAT(pending, SizeIs(2));
    EXPECT_THAT(database.recentSessions(20), SizeIs(1));

    std::filesystem::permissions(file, std::filesystem::perms(0644));
    holder.reset();
    ASSERT_TRUE(waitUntil([&] { return !database.file().empty(); }));
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0600));
    EXPECT_EQ(ask(file, "SELECT cardName, count(*) FROM sessions JOIN files ON sessionID = "
                        "sessions.id"),
              "A001|2\n");
    EXPECT_EQ(ask(file, "SELECT payload FROM outbox ORDER BY id"), "earlier\n1\n2\n");
    // Whoever was sending one of them meanwhile takes off that one and no other.
    database.deleteOutbox(pending[0]);
    database.bumpOutbox(pending[1], "no route");
    EXPECT_EQ(database.outboxRow(pending[1])->payload, "2");
    database.enqueueOutbox("session", "later");
    EXPECT_EQ(ask(file, "SELECT payload, attempts FROM outbox ORDER BY id"),
              "earlier|0\n2|1\nlater|0\n");

    // A program that ends before its next try makes one.
    holder.emplace(file.native(), SQLite::OPEN_READWRITE);
    holder->exec("BEGIN EXCLUSIVE");
    auto waiting = AppDatabase::openOrWait(file, {.patience = 1ms, .interval = 1h});
    // So does one that has the file and finds it held later on.
    database.enqueueOutbox("session", "meanwhile");
    database.recordActivity({}, "card_detected", "B002");
    database.recordCheck(session, {.checkedAt = Clock::now(), .filesEqual = 2});
    const std::string large(5 << 20, 'x');
    waiting.enqueueOutbox({"session", [&](const auto& put) {
                               for (int piece = 0; piece < 3; ++piece)
                                   put(large + std::to_string(piece));
                           }});
    const L10n turkish(AppLanguage::Turkish);
    for (auto* kept : {&database, &waiting})
        EXPECT_EQ(kept->writeWhatIsKept(turkish, 1ms), "başka bir program kullanıyor");
    holder.reset();
    for (auto* kept : {&database, &waiting})
        EXPECT_FALSE(kept->writeWhatIsKept(turkish));
    EXPECT_EQ(ask(file, "SELECT payload, typeof(payload) FROM outbox WHERE id > 3"),
              "later|text\nmeanwhile|text\n|text\n");
    EXPECT_EQ(ask(file, "SELECT detail FROM activity_events WHERE event = 'card_detected'"),
              "B002\n");
    EXPECT_EQ(database.history().at(0).lastCheck.value().filesEqual, 2);
    const auto last = database.pendingOutboxIDs().back();
    EXPECT_EQ(database.outboxRow(last)->payload, large + "0" + large + "1" + large + "2");
    database.deleteOutbox(last);
    EXPECT_EQ(ask(file, "SELECT count(*) FROM outbox_pieces"), "0\n");
}

TEST_F(StoreFile, OneThatAnotherProgramPutAsideIsNotTouched) {
    AppDatabase database(file);
    save(database, outcomeAt("2026-03-01T09:30:15Z"), "A001", "SSD", "CamA");
    std::filesystem::rename(file, folder / "aside");
    const AppDatabase theirs(file);
    EXPECT_ANY_THROW(database.recentSessions(20));
    EXPECT_ANY_THROW(save(database, outcomeAt("2026-03-02T09:30:15Z"), "B002", "SSD", "CamA"));
    EXPECT_EQ(ask(folder / "aside", "SELECT cardName FROM sessions"), "A001\n");
}

TEST_F(StoreFile, WhatIsNoStoreIsSetAsideAndANewOneBegun) {
    const auto make = [&](const char* statements) {
        return [this, statements] {
            ask(file, statements);
        };
    };
    const std::vector<std::function<void()>> damages = {
        [&] { writeFile(file, std::string(8192, 'x')); },
        make("CREATE TABLE sessions (something TEXT)"),
    };
    for (const auto& damage : damages) {
        std::filesystem::remove(file);
        damage();
        const auto kind = readFile(file).substr(0, 16);
        auto database = AppDatabase::openOrWait(file, {});
        EXPECT_EQ(database.file(), file);
        const auto aside = database.takeSetAside();
        ASSERT_TRUE(aside);
        EXPECT_THAT(readFile(*aside), ::testing::StartsWith(kind));
        EXPECT_FALSE(database.takeSetAside()) << "told once";
        EXPECT_EQ(database.setAside(), *aside);
        save(database, outcomeAt("2026-03-01T09:30:15Z"), "A001", "SSD", "CamA");
        EXPECT_THAT(database.recentSessions(20), SizeIs(1));
    }
}

TEST_F(StoreFile, WhatIsNoStoreIsRefusedAndKept) {
    writeFile(file, std::string(8192, 'x'));
    EXPECT_ANY_THROW(AppDatabase{file});
    EXPECT_EQ(readFile(file), std::string(8192, 'x'));
    EXPECT_ANY_THROW(AppDatabase{folder / "missing/dit.sqlite"});

    std::filesystem::remove(file);
    ask(file, "CREATE TABLE sessions (something TEXT)");
    EXPECT_ANY_THROW(AppDatabase{file}) << "a table of that name that is not ours";
    EXPECT_EQ(ask(file, "SELECT count(*) FROM grdb_migrations"), "0\n");
}
