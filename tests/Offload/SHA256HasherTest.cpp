#include "Offload/SHA256Hasher.h"

#include "Offload/OffloadError.h"
#include "Platform/Error.h"
#include "support/Files.h"

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <fstream>

using namespace slatewise;
using namespace slatewise::test;
using ::testing::ElementsAre;

namespace {

constexpr auto kBuffer = Transfer::chunkBytes;

} // namespace

TEST(SHA256Hasher, CopiesAndHashesEverySizeAroundTheBuffer) {
    const TemporaryFolder folder;
    const RootFolder root(folder.path());
    Transfer transfer;
    for (const std::size_t size :
         std::initializer_list<std::size_t>{0, 1, 511, 512, 4095, 4096, 4097, kBuffer - 1, kBuffer,
                                            kBuffer + 1, 3 * kBuffer + 4096 + 7}) {
        SCOPED_TRACE(size);
        const auto content = bytesOf(size, 7);
        root.removeFile("copy");
        writeFile(folder / "source", content);
        std::filesystem::last_write_time(
            folder / "source",
            std::filesystem::file_time_type(std::chrono::nanoseconds(123'456'789'012'345'678)));
        std::vector<std::size_t> chunks;
        std::vector<FileAccess> ways;
        const auto result = SHA256Hasher::copyAndHash(
            transfer, {root, "source"}, {root, "copy"},
            {.onBytes = [&](std::size_t count) { chunks.push_back(count); },
             .onAccess = [&](const auto&, FileAccess way) { ways.push_back(way); },
             .stop = {}});

        EXPECT_THAT(ways, ElementsAre(FileAccess::Direct, FileAccess::Direct));
        EXPECT_EQ(result.bytes, static_cast<std::int64_t>(size));
        EXPECT_EQ(result.digests.sha256, independentSha256(folder / "source"));
        EXPECT_EQ(readFile(folder / "copy"), content);
        EXPECT_EQ(std::filesystem::last_write_time(folder / "copy"),
                  std::filesystem::last_write_time(folder / "source"));
        EXPECT_EQ(chunks.size(), (size + kBuffer - 1) / kBuffer);
        EXPECT_EQ(SHA256Hasher::hashFile(transfer, {root, "copy"}).sha256, result.digests.sha256);
    }
}

TEST(SHA256Hasher, RaisesASmallBufferAndTakesAnOddOne) {
    const TemporaryFolder folder;
    const RootFolder root(folder.path());
    writeFile(folder / "file", bytesOf(200'000));
    const auto expected = independentSha256(folder / "file");
    for (const std::size_t size : {std::size_t{1}, std::size_t{65'536}, std::size_t{100'001}}) {
        std::size_t largest = 0;
        Transfer transfer(size);
        EXPECT_EQ(SHA256Hasher::hashFile(
                      transfer, {root, "file"},
                      {.onBytes = [&](std::size_t count) { largest = std::max(largest, count); },
                       .onAccess = {},
                       .stop = {}})
                      .sha256,
                  expected);
        EXPECT_EQ(largest, std::max(size, Transfer::leastChunkBytes));
    }
}

TEST(SHA256Hasher, ReplacesNothing) {
    const TemporaryFolder folder;
    const RootFolder root(folder.path());
    Transfer transfer;
    writeFile(folder / "source", "new");
    writeFile(folder / "precious", "must not be written through a link");
    writeFile(folder / "file", "older and longer");
    std::filesystem::create_symlink(folder / "precious", folder / "link");
    std::filesystem::create_symlink("nowhere", folder / "dangling");
    std::filesystem::create_directories(folder / "tree/with/folders");
    for (const auto* name : {"tree", "file", "link", "dangling"}) {
        EXPECT_THROW(SHA256Hasher::copyAndHash(transfer, {root, "source"}, {root, name}),
                     PosixError)
            << name;
    }
    EXPECT_EQ(readFile(folder / "file"), "older and longer");
    EXPECT_FALSE(std::filesystem::exists(folder / "nowhere"));
    EXPECT_EQ(readFile(folder / "precious"), "must not be written through a link");
}

TEST(SHA256Hasher, ASourceThatGrowsOrShrinksIsNoCopy) {
    const TemporaryFolder folder;
    const RootFolder root(folder.path());
    Transfer transfer;
    constexpr std::int64_t kSize = 2 * kBuffer;
    for (const std::int64_t change : {1, -4096}) {
        writeFile(folder / "source", bytesOf(kSize));
        root.removeFile("copy");
        // Told once all is read and written: too late to be copied, soon enough to be seen.
        const auto resize = [&](const FileBeneath& file, FileAccess) {
            if (file.relative == "source")
                std::filesystem::resize_file(file.path(),
                                             static_cast<std::uintmax_t>(kSize + change));
        };
        try {
            SHA256Hasher::copyAndHash(transfer, {root, "source"}, {root, "copy"},
                                      {.onBytes = {}, .onAccess = resize, .stop = {}});
            FAIL() << "a source that changed by " << change << " was taken";
        } catch (const OffloadError& failure) {
            const auto& sizes = std::get<OffloadError::SizeMismatch>(failure.reason());
            EXPECT_EQ(sizes.source, kSize + change);
            EXPECT_EQ(sizes.copied, kSize);
        }
    }
}

TEST(SHA256Hasher, WhatIsNoFileFailsAtOnceInClearWords) {
    const TemporaryFolder folder;
    const RootFolder root(folder.path());
    Transfer transfer;
    ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
    const int server = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    const auto socketPath = std::filesystem::relative(folder / "socket").native();
    ASSERT_LT(socketPath.size(), sizeof address.sun_path);
    socketPath.copy(address.sun_path, socketPath.size());
    ASSERT_EQ(::bind(server, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    std::filesystem::create_directory(folder / "folder");

    const RootFolder devices("/dev");
    const std::vector<std::pair<FileBeneath, std::string>> cases = {
        {{root, "fifo"}, ": it is a FIFO, a socket or a device, not a file"},
        {{root, "socket"}, ": it is a FIFO, a socket or a device, not a file"},
        {{devices, "zero"}, ": it is a FIFO, a socket or a device, not a file"},
        {{root, "folder"}, ": Is a directory"},
        {{root, "missing"}, ": No such file or directory"}};
    for (const auto& [file, words] : cases) {
        const auto path = file.path().native();
        try {
            SHA256Hasher::copyAndHash(transfer, file, {root, "copy"});
            FAIL() << path;
        } catch (const Error& failure) {
            const auto description = failure.localizedDescription();
            EXPECT_TRUE(description.ends_with(path + words)) << description;
        }
    }
    ::close(server);
}

TEST(Verifier, MatchesInEitherCaseButNeverNothing) {
    EXPECT_TRUE(Verifier::matches("ABC", "abc"));
    EXPECT_FALSE(Verifier::matches("abc", "abd"));
    EXPECT_FALSE(Verifier::matches("", ""));
    EXPECT_FALSE(Verifier::matches("", "abc"));
}
