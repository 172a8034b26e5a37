#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
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

    /// Tries to have the file, again and again from then on; `failure` is why it could not be had
    /// before.
    static std::shared_ptr<StoreConnection> waitingFor(const std::filesystem::path& file,
                                                       std::chrono::milliseconds interval,
                                                       const std::string& failure);

    /// Tries once more where the file is still waited for.
    ~StoreConnection();
    StoreConnection(const StoreConnection&) = delete;
    StoreConnection& operator=(const StoreConnection&) = delete;

    /// Empty while everything is in memory.
    std::filesystem::path file() const;

    /// Runs `work` alone and as one transaction.
    template <typename Work>
    void write(Work&& work) {
        const std::lock_guard guard(lock_);
        SQLite::Transaction transaction(*database_, SQLite::TransactionBehavior::IMMEDIATE);
        work(*database_);
        transaction.commit();
    }

    template <typename Work>
    auto read(Work&& work) {
        const std::lock_guard guard(lock_);
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
    /// False when the file cannot be had now.
    bool moveToFile(std::chrono::milliseconds patience);
    void moveRows(const std::filesystem::path& file);
    static void keepTrying(std::weak_ptr<StoreConnection> waiting,
                           std::chrono::milliseconds interval);

    mutable std::mutex lock_;
    std::unique_ptr<SQLite::Database> database_;
    /// The file that is waited for.
    std::filesystem::path awaited_;
    /// In memory, rows of the outbox have ids that no file gives.
    std::int64_t lastOutboxID_ = std::int64_t{-1} << 62;
    std::map<std::int64_t, std::int64_t> movedOutboxIDs_;
};

} // namespace slatewise
