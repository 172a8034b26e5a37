#include "Platform/Files/UncachedFile.h"

#include "Platform/Error.h"
#include "support/Files.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace slatewise;
using slatewise::test::TemporaryFolder;

namespace {

std::string readBack(const FileBeneath& name, std::size_t bufferSize) {
    auto file = UncachedFile::openForReading(name);
    TransferBuffer buffer(bufferSize);
    std::string content;
    while (const auto count = file.read(buffer.bytes()))
        content.append(reinterpret_cast<const char*>(buffer.bytes().data()), count);
    return content;
}

} // namespace

TEST(UncachedFile, WritesAndReadsEverySize) {
    const TemporaryFolder folder;
    const RootFolder root(folder.path());
    constexpr std::size_t kBuffer = 65536;
    for (const std::size_t size :
         {0u, 1u, 511u, 512u, 4095u, 4096u, 4097u, 65536u, 65537u, 131072u, 200001u}) {
        SCOPED_TRACE(size);
        const auto content = test::bytesOf(size);
        auto file = UncachedFile::createForWriting({root, "file"});
        TransferBuffer buffer(kBuffer);
        for (std::size_t at = 0; at < size; at += kBuffer) {
            const auto count = std::min(kBuffer, size - at);
            std::memcpy(buffer.bytes().data(), content.data() + at, count);
            file.write(buffer.bytes().first(count));
        }
        file.sync();
        EXPECT_EQ(test::readFile(folder / "file"), content);
        EXPECT_EQ(readBack({root, "file"}, kBuffer), content);
    }
}
