#include "Floor.h"

#include "Primitives.h"

namespace slatewise::bench {

void copyAtTheFloor(const std::filesystem::path& from, const std::filesystem::path& to) {
    const auto buffer = chunkBuffer();
    const auto hashOpen = [&](int file, const auto& each) {
        Hash hash;
        ssize_t count = 0;
        while ((count = ::read(file, buffer.get(), kChunkBytes)) > 0) {
            hash.add(buffer.get(), static_cast<std::size_t>(count));
            each(static_cast<std::size_t>(count));
        }
        if (count < 0)
            fail("read");
        return hash.finish();
    };
    const auto copyFile = [&](const std::string& source, const std::string& target) {
        const int file = openSource(source);
        const int copy = openCopy(target);
        const auto digest =
            hashOpen(file, [&](std::size_t count) { writeChunk(copy, buffer.get(), count); });
        finishCopy(file, copy, source, target);
        return digest;
    };
    const auto hashFile = [&](const std::string& path) {
        const int file = openSource(path);
        const auto digest = hashOpen(file, [](std::size_t) {});
        ::close(file);
        return digest;
    };
    copyAndProve(from, to, copyFile, hashFile);
}

} // namespace slatewise::bench
