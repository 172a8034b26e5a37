#include "Offload/Transfer.h"

#include "Offload/ReadBackAhead.h"
#include "Offload/RunReporter.h"
#include "Offload/RunTransfer.h"
#include "Offload/SHA256Hasher.h"
#include "Platform/Error.h"
#include "support/Files.h"
#include "support/Limit.h"
#include "support/MountedVolume.h"
#include "support/Process.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <csignal>
#include <future>
#include <map>
#include <thread>

using namespace slatewise;
using namespace slatewise::test;

namespace {

constexpr std::size_t kChunk = Transfer::chunkBytes;
constexpr int kChunks = 8;

std::vector<FileDescriptor> allDescriptors() {
    std::vector<FileDescriptor> taken;
    do
        taken.emplace_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    while (taken.back());
    return taken;
}

/// Copies of many sizes, most of them small; one has grown since, and one is gone.
class ReadBackAheadTest : public ::testing::Test {
protected:
    ReadBackAheadTest() {
        const std::size_t sizes[] = {0, 1, 5, 4097, 65'536, kChunk, kChunk + 1, 7, 8, 9, 10, 11};
        for (const auto size : sizes) {
            auto& row = rows.emplace_back();
            row.relativePath = std::to_string(rows.size());
            row.sizeBytes = static_cast<std::int64_t>(size);
            order.insert(order.begin(), rows.size() - 1);
            const auto file = folder / row.relativePath;
            writeFile(file, bytesOf(size == 0 ? 2 * kChunk : size, 1));
            if (size == 5)
                std::filesystem::remove(file);
            else
                digests[row.relativePath] = independentSha256(file);
        }
    }

    /// Reads those from that position on. Whoever stops that is told so.
    void expectAll(ReadBackAhead& copies, std::size_t from) {
        for (auto position = from; position < order.size(); ++position) {
            const auto& name = rows[order[position]].relativePath;
            std::size_t told = 0;
            std::vector<std::filesystem::path> ended;
            const TransferWatch watch = {
                .onBytes = [&](auto count) { told += count; },
                .onAccess = [&](const auto& file, auto) { ended.push_back(file.relative); },
                .stop = {}};
            if (!digests.contains(name)) {
                try {
                    (void)copies.read(position, watch);
                    ADD_FAILURE() << "read what is gone";
                } catch (const PosixError&) {
                }
                continue;
            }
            EXPECT_EQ(copies.read(position, watch).digests.sha256, digests[name]) << name;
            EXPECT_EQ(told, std::filesystem::file_size(folder / name));
            EXPECT_EQ(ended, std::vector<std::filesystem::path>{name});
        }
    }

    const TemporaryFolder folder;
    const RootFolder root{folder.path()};
    std::vector<FileCopyResult> rows;
    std::vector<std::size_t> order;
    std::map<std::string, std::string> digests;
    const CopyEngine::Observer observer{};
    const RunReporter reporter{observer};
};

} // namespace

TEST(Transfer, FailuresComeInTheOrderOfTheFile) {
    MountedVolume card(MountedVolume::FileSystem::Ext4, 64 << 20);
    const TemporaryFolder folder;
    const auto content = bytesOf(kChunks * kChunk, 3);
    writeFile(card / "clip", content);
    card.remount();
    const auto image = readFile(card.image());
    std::signal(SIGXFSZ, SIG_IGN);
    const RootFolder from(card.path());
    const RootFolder to(folder.path());
    Transfer transfer;
    struct Case {
        /// Counted from 1; the first that fails.
        int read, write;
        const char* failure;
        int written;
    };
    // The device loses more of its end from case to case.
    for (const auto& [read, write, failure, written] :
         {Case{7, 4, "write", 3}, Case{5, 8, "read", 4}, Case{5, 6, "read", 4},
          Case{5, 5, "read", 4}, Case{5, 4, "write", 3}, Case{3, 3, "read", 2},
          Case{3, 2, "write", 1}, Case{1, 1, "read", 0}}) {
        SCOPED_TRACE(fmt::format("read {}, write {}", read, write));
        const auto end =
            image.find(content.substr(static_cast<std::size_t>(read - 1) * kChunk, 64));
        ASSERT_NE(end, std::string::npos);
        std::filesystem::resize_file(card.image(), end);
        to.removeFile("copy");
        // The write that would make a file longer fails.
        const Limit length(RLIMIT_FSIZE, static_cast<rlim_t>(write - 1) * kChunk);
        std::size_t told = 0;
        if (read % 2 == 1)
            transfer.prepare({from, "clip"});
        try {
            SHA256Hasher::copyAndHash(
                transfer, {from, "clip"}, {to, "copy"},
                {.onBytes = [&](std::size_t count) { told += count; }, .onAccess = {}, .stop = {}});
            ADD_FAILURE() << "copied what cannot be copied";
        } catch (const PosixError& error) {
            EXPECT_TRUE(error.localizedDescription().starts_with(failure))
                << error.localizedDescription();
        }
        EXPECT_EQ(told, static_cast<std::size_t>(written) * kChunk);
        EXPECT_TRUE(readFile(folder / "copy") == content.substr(0, told));
    }
}

TEST(Transfer, StopsWithinAChunkWhereverItIs) {
    const TemporaryFolder folder;
    const RootFolder root(folder.path());
    const auto content = bytesOf(kChunks * kChunk + 1, 4);
    writeFile(folder / "clip", content);
    Transfer transfer;
    for (int chunk = 0; chunk <= kChunks; ++chunk) {
        SCOPED_TRACE(chunk);
        root.removeFile("copy");
        std::stop_source stop;
        std::size_t told = 0;
        const auto stopAt = [&] {
            if (told >= static_cast<std::size_t>(chunk) * kChunk)
                stop.request_stop();
        };
        const TransferWatch watch = {.onBytes =
                                         [&](std::size_t count) {
                                             told += count;
                                             stopAt();
                                         },
                                     .onAccess = {},
                                     .stop = stop.get_token()};
        if (chunk % 2 == 1)
            transfer.prepare({root, "clip"});
        stopAt();
        EXPECT_THROW(SHA256Hasher::copyAndHash(transfer, {root, "clip"}, {root, "copy"}, watch),
                     CancellationError);
        EXPECT_GE(told, static_cast<std::size_t>(chunk) * kChunk);
        EXPECT_LE(told, static_cast<std::size_t>(chunk + 1) * kChunk);
        EXPECT_TRUE(readFile(folder / "copy") == content.substr(0, told));
    }
}

TEST(Transfer, StopsFromOutsideAtAnyMomentAndGoesOnAfterwards) {
    const TemporaryFolder folder;
    const RootFolder root(folder.path());
    const auto content = bytesOf(3 * kChunk, 5);
    writeFile(folder / "clip", content);
    const auto digest = independentSha256(folder / "clip");
    Transfer transfer;
    for (int moment = 0; moment < 60; ++moment) {
        std::stop_source stop;
        std::size_t told = 0;
        const TransferWatch watch = {.onBytes = [&](std::size_t count) { told += count; },
                                     .onAccess = {},
                                     .stop = stop.get_token()};
        const std::jthread other([&] {
            std::this_thread::sleep_for(std::chrono::microseconds(100 * moment));
            stop.request_stop();
        });
        const bool isProof = moment % 2 == 1;
        root.removeFile("copy");
        if (moment % 3 == 1)
            transfer.prepare({root, "clip"});
        try {
            EXPECT_EQ(
                isProof ? SHA256Hasher::hashFile(transfer, {root, "clip"}, watch).sha256
                        : SHA256Hasher::copyAndHash(transfer, {root, "clip"}, {root, "copy"}, watch)
                              .digests.sha256,
                digest);
            EXPECT_EQ(told, content.size());
        } catch (const CancellationError&) {
            EXPECT_TRUE(isProof || readFile(folder / "copy") == content.substr(0, told));
        }
    }
    EXPECT_EQ(SHA256Hasher::hashFile(transfer, {root, "clip"}).sha256, digest);
}

TEST(Transfer, WhatIsReadAheadIsAsIfItWereReadInItsTurn) {
    const TemporaryFolder folder;
    const RootFolder root(folder.path());
    Transfer transfer;
    const auto copy = [&](const std::string& name, const std::string& next) {
        root.removeFile("copy");
        std::size_t told = 0;
        const auto digest =
            SHA256Hasher::copyAndHash(
                transfer, {root, name}, {root, "copy"},
                {.onBytes = [&](auto count) { told += count; }, .onAccess = {}, .stop = {}},
                FileBeneath{root, next})
                .digests.sha256;
        EXPECT_EQ(told, std::filesystem::file_size(folder / name)) << "nothing of what comes next";
        EXPECT_EQ(digest, independentSha256(folder / name));
        EXPECT_EQ(digest, independentSha256(folder / "copy"));
    };
    const std::vector<std::size_t> sizes = {0, 1, kChunk, kChunk + 1, 6 * kChunk, 5};
    for (std::size_t index = 0; index < sizes.size(); ++index)
        writeFile(folder / std::to_string(index),
                  bytesOf(sizes[index], static_cast<std::uint32_t>(index)));
    for (std::size_t index = 0; index < sizes.size(); ++index)
        copy(std::to_string(index), std::to_string(index + 1));
    // What was begun is left for what is asked for.
    copy("4", "2");
    copy("3", "4");
    copy("1", "gone");
    EXPECT_THROW(SHA256Hasher::hashFile(transfer, {root, "gone"}), PosixError);
}

TEST_F(ReadBackAheadTest, GivesEachCopyInItsTurnHoweverShortTheSystemIs) {
    for (const bool isShort : {false, true}) {
        const Limit files(RLIMIT_NOFILE, 256);
        RunTransfer transfer(reporter, {});
        ReadBackAhead copies(transfer, root, rows, order);
        if (isShort) {
            const auto taken = allDescriptors();
            EXPECT_THROW((void)copies.read(0, {}), PosixError);
        }
        expectAll(copies, isShort ? 1 : 0);
    }
}

TEST_F(ReadBackAheadTest, StopsAtAnyMoment) {
    for (int moment = 0; moment < 30; ++moment) {
        std::stop_source stop;
        RunTransfer transfer(reporter, stop.get_token());
        ReadBackAhead copies(transfer, root, rows, order);
        const std::jthread stopping([&] {
            std::this_thread::sleep_for(std::chrono::microseconds(20 * moment));
            stop.request_stop();
        });
        try {
            expectAll(copies, 0);
        } catch (const CancellationError&) {
        }
    }
}

TEST(Transfer, DoesNotWaitForADiskThatDoesNotAnswer) {
    const MountedVolume card(MountedVolume::FileSystem::ExFat, 64 << 20);
    const TemporaryFolder folder;
    writeFile(card / "clip", bytesOf(2 * kChunks * kChunk, 6));
    // A program that is started while the disk hangs would wait for it.
    const auto halting =
        fmt::format("until [ -e '{1}/hang' ]; do sleep 0.01; done; kill -STOP {0}; "
                    "touch '{1}/hangs'; "
                    "until [ -e '{1}/answer' ]; do sleep 0.01; done; kill -CONT {0}",
                    card.programID(), folder.path().native());
    auto halted = std::async(std::launch::async, [&] {
        runPrivileged({"timeout", "60", "sh", "-c", halting});
    });
    const RootFolder from(card.path());
    const RootFolder to(folder.path());
    std::stop_source stop;
    std::size_t told = 0;
    const TransferWatch watch = {.onBytes =
                                     [&](std::size_t count) {
                                         writeFile(folder / "hang", "");
                                         while (told == 0 &&
                                                !std::filesystem::exists(folder / "hangs"))
                                             std::this_thread::yield();
                                         told += count;
                                     },
                                 .onAccess = {},
                                 .stop = stop.get_token()};
    auto copying = std::async(std::launch::async, [&] {
        Transfer transfer;
        SHA256Hasher::copyAndHash(transfer, {from, "clip"}, {to, "copy"}, watch);
    });
    EXPECT_EQ(copying.wait_for(std::chrono::seconds(1)), std::future_status::timeout);
    stop.request_stop();
    EXPECT_EQ(copying.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    writeFile(folder / "answer", "");
    EXPECT_THROW(copying.get(), CancellationError);
    EXPECT_EQ(std::filesystem::file_size(folder / "copy"), told);
    halted.get();
}
