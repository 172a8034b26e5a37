#include "Platform/Files/UncachedFile.h"

#include "Platform/Error.h"
#include "support/Files.h"
#include "support/Sandbox.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstring>

using namespace slatewise;
using slatewise::test::TemporaryFolder;

TEST(UncachedFile, GoesThroughTheCacheWhereATransferIsRefused) {
    const TemporaryFolder folder;
    const RootFolder root(folder.path());
    const auto content = test::bytesOf(3 * 65536);
    TransferBuffer buffer(content.size() + 1);
    // No device takes memory that begins anywhere.
    const auto misaligned = buffer.bytes().subspan(1, content.size());
    std::memcpy(misaligned.data(), content.data(), content.size());
    auto written = UncachedFile::createForWriting({root, "file"});
    ASSERT_EQ(written.access(), FileAccess::Direct);
    written.write(misaligned);
    written.sync();
    EXPECT_EQ(written.access(), FileAccess::CacheDropped);
    EXPECT_EQ(test::readFile(folder / "file"), content);

    std::memset(misaligned.data(), 0, content.size());
    auto read = UncachedFile::openForReading({root, "file"});
    EXPECT_EQ(read.read(misaligned), content.size());
    EXPECT_EQ(read.access(), FileAccess::CacheDropped);
    EXPECT_EQ(std::memcmp(misaligned.data(), content.data(), content.size()), 0);

    // Any other failure is the device's own, and the cache must not gloss over it.
    const auto aligned = buffer.bytes().first(content.size());
    for (const bool reads : {true, false}) {
        const int code = reads ? EIO : ENOSPC;
        auto file = reads ? UncachedFile::openForReading({root, "file"})
                          : UncachedFile::createForWriting({root, "full"});
        int met = 0;
        test::runWithout(reads ? SYS_read : SYS_write, code, [&] {
            try {
                if (reads)
                    (void)file.read(aligned);
                else
                    file.write(aligned);
            } catch (const PosixError& failure) {
                met = failure.code();
            }
        });
        EXPECT_EQ(met, code);
        EXPECT_EQ(file.access(), FileAccess::Direct) << code;
    }
}

TEST(UncachedFile, KnowsWhatStaysInMemory) {
    constexpr long kCachestatCall = 451;
    const TemporaryFolder folder;
    const RootFolder root(folder.path());
    constexpr std::size_t kSize = 3 * 1'048'576;
    test::writeFile(folder / "file", test::bytesOf(kSize));
    test::writeFile(folder / "empty", "");
    const FileDescriptor file(::open((folder / "file").c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::fsync(file.get()), 0);
    for (const int answer : {0, ENOSYS}) {
        SCOPED_TRACE(answer);
        test::runWithout(kCachestatCall, answer, [&] {
            const auto isKept = [&](const char* name) {
                return UncachedFile::openForReading({root, name}).isKeptInMemory();
            };
            // Another program that uses the last page alone.
            void* const window = ::mmap(nullptr, kSize, PROT_READ, MAP_SHARED, file.get(), 0);
            ASSERT_NE(window, MAP_FAILED);
            (void)static_cast<volatile const char*>(window)[kSize - 1];
            EXPECT_TRUE(isKept("file"));
            ::munmap(window, kSize);
            EXPECT_FALSE(isKept("file"));
            EXPECT_FALSE(isKept("empty"));
        });
    }
}
