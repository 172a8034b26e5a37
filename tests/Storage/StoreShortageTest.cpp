#include "Storage/StoreFile.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sqlite3.h>

#include <atomic>
#include <cerrno>
#include <functional>
#include <limits>

// What becomes of the store when the system refuses it something for a moment.

using namespace slatewise;
using namespace slatewise::test;
using ::testing::SizeIs;

namespace {

/// A call of the store's, and how it fails.
struct CallKind {
    const char* name;
    sqlite3_syscall_ptr function;
    int error;
    /// As a server does to which the call came twice.
    bool isDoneAllTheSame = false;
};

/// While it lives, one of the store's calls fails.
class FailingCall {
public:
    template <typename First, typename... Others>
    static CallKind of(const char* name, int error, bool isDoneAllTheSame = false) {
        return {name, reinterpret_cast<sqlite3_syscall_ptr>(call<First, Others...>), error,
                isDoneAllTheSame};
    }

    /// Has `work`, which makes one of these, done again and again, until all calls have failed.
    static void atEach(const CallKind& kind, const std::function<void()>& work) {
        kind_ = kind;
        int position = 0;
        do {
            SCOPED_TRACE(kind.name + std::to_string(++position));
            left_ = position;
            work();
        } while (left_ <= 0);
        EXPECT_GT(position, 1) << kind.name;
    }

    FailingCall() {
        real_ = files()->xGetSystemCall(files(), kind_.name);
        files()->xSetSystemCall(files(), kind_.name, kind_.function);
    }
    ~FailingCall() { files()->xSetSystemCall(files(), kind_.name, nullptr); }
    FailingCall(const FailingCall&) = delete;
    FailingCall& operator=(const FailingCall&) = delete;

private:
    template <typename First, typename... Others>
    static int call(First first, Others... others) {
        const bool fails = --left_ == 0;
        const auto real = reinterpret_cast<int (*)(First, ...)>(real_);
        if (!fails)
            return real(first, others...);
        if (kind_.isDoneAllTheSame)
            real(first, others...);
        errno = kind_.error;
        return -1;
    }
    static sqlite3_vfs* files() { return sqlite3_vfs_find(nullptr); }

    static inline CallKind kind_{};
    static inline int left_ = 0;
    static inline sqlite3_syscall_ptr real_ = nullptr;
};

const auto kOpen = FailingCall::of<const char*, int, int>("open", EMFILE);

/// Has the store find as much memory as is left to it, in pieces. No database may be open at its
/// beginning and its end.
class ScarceMemory {
public:
    ScarceMemory() {
        sqlite3_shutdown();
        sqlite3_config(SQLITE_CONFIG_GETMALLOC, &usual_);
        auto scarce = usual_;
        scarce.xMalloc = [](int bytes) {
            return left_-- > 0 ? usual_.xMalloc(bytes) : nullptr;
        };
        scarce.xRealloc = [](void* piece, int bytes) {
            return left_-- > 0 ? usual_.xRealloc(piece, bytes) : nullptr;
        };
        use(scarce, 0, 0);
    }
    ~ScarceMemory() {
        sqlite3_shutdown();
        constexpr int kUsualBytes = 1200;
        constexpr int kUsualPieces = 40;
        use(usual_, kUsualBytes, kUsualPieces);
    }
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;

    static void leave(int pieces) { left_ = pieces; }
    static void leaveAll() { left_ = std::numeric_limits<int>::max(); }

private:
    /// Pieces that are put by would be there when all others are gone.
    static void use(const sqlite3_mem_methods& memory, int bytesPutBy, int piecesPutBy) {
        sqlite3_config(SQLITE_CONFIG_MALLOC, &memory);
        sqlite3_config(SQLITE_CONFIG_LOOKASIDE, bytesPutBy, piecesPutBy);
    }

    static inline sqlite3_mem_methods usual_{};
    static inline std::atomic<int> left_ = std::numeric_limits<int>::max();
};

} // namespace

TEST_F(StoreFile, AFailingCallLeavesNothingOrAllOnceAndAStoreThatGoesOn) {
    using namespace std::chrono_literals;
    { const AppDatabase database(file); }
    const auto fresh = readFile(file);
    const QueuedReport report = {"session", [](const auto& put) {
                                     put("{}");
                                 }};
    const auto save = [&](AppDatabase& database) {
        database.save(outcomeAt("2026-03-01T09:30:15Z"), {}, "A001", "SSD", "", {}, &report);
    };
    const auto stored = [&] {
        return ask(file, "SELECT (SELECT count(*) FROM sessions), (SELECT count(*) FROM outbox)");
    };
    const auto saveUnlessItFails = [&] {
        std::optional<AppDatabase> database;
        bool isSaved = false;
        {
            const FailingCall failing;
            try {
                save(database.emplace(file));
                isSaved = true;
            } catch (const SQLite::Exception&) {
                // Nobody may take that for a session that is stored.
            }
        }
        EXPECT_EQ(stored(), isSaved ? "1|1\n" : "0|0\n");
        if (database) {
            EXPECT_NO_THROW(save(*database));
        }
    };
    const auto keepAndMove = [&] {
        std::optional<SQLite::Database> holder(std::in_place, file.native(),
                                               SQLite::OPEN_READWRITE);
        holder->exec("BEGIN EXCLUSIVE");
        auto database = AppDatabase::openOrWait(file, {.patience = 1ms, .interval = 1h});
        save(database);
        holder.reset();
        const L10n english(AppLanguage::English);
        {
            const FailingCall failing;
            database.writeWhatIsKept(english);
        }
        EXPECT_EQ(database.writeWhatIsKept(english), std::nullopt);
        EXPECT_EQ(stored(), "1|1\n");
        EXPECT_NO_THROW(save(database));
    };
    for (const auto& kind : {FailingCall::of<int, int, struct flock*>("fcntl", EIO),
                             FailingCall::of<const char*>("unlink", ENOENT, true), kOpen}) {
        for (const auto& work : {std::function(saveUnlessItFails), std::function(keepAndMove)}) {
            FailingCall::atEach(kind, [&] {
                writeFile(file, fresh);
                work();
            });
        }
    }
}

TEST_F(StoreFile, GoesOnOnceThereIsMemoryAgain) {
    using namespace std::chrono_literals;
    const ScarceMemory memory;
    // Ever more, until it is done.
    const auto untilDone = [](const std::function<bool()>& work, AppDatabase& database) {
        constexpr int kPlenty = 5000;
        int amount = 0;
        for (bool isDone = false; !isDone && amount < kPlenty; ++amount) {
            ScarceMemory::leave(amount);
            isDone = work();
            ScarceMemory::leaveAll();
            EXPECT_NO_THROW(database.pendingOutboxIDs()) << amount;
        }
        EXPECT_GT(amount, 10);
        EXPECT_LT(amount, kPlenty);
    };
    AppDatabase database(file);
    const auto outcome = outcomeAt("2026-03-01T09:30:15Z");
    const auto isSaved = [&] {
        try {
            save(database, outcome, "A001", "SSD", "CamA");
            return true;
        } catch (const SQLite::Exception&) {
            return false;
        }
    };
    untilDone(isSaved, database);
    EXPECT_THAT(database.recentSessions(20), SizeIs(1));

    std::optional<SQLite::Database> holder(std::in_place, file.native(), SQLite::OPEN_READWRITE);
    holder->exec("BEGIN EXCLUSIVE");
    auto waiting = AppDatabase::openOrWait(file, {.patience = 1ms, .interval = 1h});
    save(waiting, outcomeAt("2026-03-02T09:30:15Z"), "B002", "SSD", "CamA");
    holder.reset();
    const auto isMoved = [&] {
        return !waiting.writeWhatIsKept(L10n(AppLanguage::English));
    };
    untilDone(isMoved, waiting);
    EXPECT_THAT(database.recentSessions(20), SizeIs(2));
}

TEST_F(StoreFile, WhatIsSetAsideIsToldThoughNoNewOneCanBeBegun) {
    const std::string damaged(8192, 'x');
    int waiting = 0;
    FailingCall::atEach(kOpen, [&] {
        const TemporaryFolder of;
        writeFile(of / "store", damaged);
        const FailingCall failing;
        auto database = AppDatabase::openOrWait(of / "store", {.interval = std::chrono::hours(1)});
        const auto aside = database.takeSetAside();
        EXPECT_EQ(aside.has_value(), readFile(of / "store") != damaged);
        waiting += aside && database.file().empty();
    });
    EXPECT_GT(waiting, 0);
}
