#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace slatewise {

/// The store's one connection, used by one caller at a time. Any thread.
///
/// One that waits for its file keeps everything in memory until the file can be had, and moves it
/// there then: a program that holds the file is not for ever, and a session must not be lost to it.
class StoreConnection {
public:
    /// Says that there is no file.
    struct InMemory {};

    /// How long another process that holds the file is waited for.
    static constexpr std::chrono::milliseconds kPatience{5000};

    /// Opens or creates the file and brings its tables up to date. Fails with an exception of the
    /// SQLite wrapper.
    explicit StoreConnection(const std::filesystem::path& file,
                             std::chrono::milliseconds patience = kPatience);

    explicit StoreConnection(InMemory);

    /// Opens the file. One that cannot be had within `patience` is tried again and again from then
    /// on; one that is no store of ours, or damaged, is set aside and a new one begun.
    static std::shared_ptr<StoreConnection> openOrWait(const std::filesystem::path& file,
                                                       std::chrono::milliseconds patience,
                                                       std::chrono::milliseconds interval);

    StoreConnection(const StoreConnection&) = delete;
    StoreConnection& operator=(const StoreConnection&) = delete;

    /// Empty while everything is in memory.
    std::filesystem::path file() const;

    /// The file that is waited for; empty once everything is in it.
    std::filesystem::path awaited() const;

    /// One that waits for the same file, for what cannot be written now because of `failure`.
    std::shared_ptr<StoreConnection> whileBusy(const std::string& failure);

    /// That one, as long as it waits; else null.
    std::shared_ptr<StoreConnection> kept();

    /// As `AppDatabase` says; the second fails where that gives a reason.
    std::optional<std::filesystem::path> takeSetAside();
    std::filesystem::path setAside() const;
    void writeWhatIsKept(std::chrono::milliseconds patience);

    /// Runs `work` alone and as one transaction.
    template <typename Work>
    void write(Work&& work) {
        const std::lock_guard guard(lock_);
        makeReady();
        SQLite::Transaction transaction(*database_, SQLite::TransactionBehavior::IMMEDIATE);
        work(*database_);
        commit(transaction);
        settle(database_->getFilename());
    }

    template <typename Work>
    auto read(Work&& work) {
        const std::lock_guard guard(lock_);
        makeReady();
        SQLite::Transaction transaction(*database_);
        auto result = work(*database_);
        transaction.commit();
        return result;
    }

    /// Below, within `read` or `write`.

    /// The id of a row that is to be put into the outbox; 0 where the file gives the next one.
    std::int64_t nextOutboxID();
    /// By what id a row is known now that may have been moved.
    std::int64_t currentOutboxID(std::int64_t id) const;

private:
    static std::shared_ptr<StoreConnection> waitingFor(const std::filesystem::path& file,
                                                       std::chrono::milliseconds interval,
                                                       const std::string& failure,
                                                       const std::filesystem::path& setAside = {});
    /// With `moving_` held.
    bool isKeeping() const;
    /// Fails while the file cannot be had; does nothing when everything is in it.
    void moveToFile(std::chrono::milliseconds patience);
    void moveRows(const std::filesystem::path& file);
    /// Fails where another program has put the file aside: the next journal beside it is that of
    /// another one. Undoes what a failure has left for which there was no memory to undo it.
    void makeReady();
    /// Fails only where nothing was written: what happens once all is, such as giving back a lock,
    /// would make somebody write everything twice.
    static void commit(SQLite::Transaction& transaction);
    /// A transaction ends with a file that is deleted, which outlives a power cut once the folder
    /// is on the disk. Where that fails, all is written all the same, and only the log is told.
    static void settle(const std::string& file) noexcept;
    static void keepTrying(const std::weak_ptr<StoreConnection>& waiting,
                           std::chrono::milliseconds interval);

    mutable std::mutex lock_;
    std::unique_ptr<SQLite::Database> database_;
    /// Held by whoever moves everything to the file.
    std::mutex moving_;
    /// Set under both locks.
    std::filesystem::path awaited_;
    std::filesystem::path setAside_;
    /// Somebody has been told.
    bool isSetAsideTaken_ = false;
    /// What could not be written while another program held the file.
    std::shared_ptr<StoreConnection> kept_;
    /// In memory, rows of the outbox have ids that no file gives.
    std::int64_t lastOutboxID_ = std::int64_t{-1} << 62;
    std::map<std::int64_t, std::int64_t> movedOutboxIDs_;
};

} // namespace slatewise
