#include "Primitives.h"

#include <sys/stat.h>

#include <stdexcept>
#include <vector>

namespace slatewise::bench {

void fail(const char* what) {
    throw std::runtime_error(what);
}

Buffer chunkBuffer() {
    return Buffer(static_cast<char*>(std::aligned_alloc(kBlockBytes, kChunkBytes)));
}

int openSource(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_DIRECT);
    if (file < 0)
        fail("open");
    return file;
}

int openCopy(const std::string& path) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_DIRECT, 0644);
    if (file < 0)
        fail("open");
    return file;
}

void writeChunk(int file, const char* bytes, std::size_t count) {
    const auto tail = count % kBlockBytes;
    if (count > tail && ::write(file, bytes, count - tail) != static_cast<ssize_t>(count - tail))
        fail("write");
    if (tail == 0)
        return;
    ::fcntl(file, F_SETFL, 0);
    if (::write(file, bytes + count - tail, tail) != static_cast<ssize_t>(tail))
        fail("write");
}

void finishCopy(int source, int copy, const std::string& from, const std::string& to) {
    if (::fsync(copy) != 0)
        fail("fsync");
    ::close(copy);
    ::close(source);
    struct stat facts {};
    ::stat(from.c_str(), &facts);
    const std::array<timespec, 2> times = {timespec{0, UTIME_OMIT}, facts.st_mtim};
    ::utimensat(AT_FDCWD, to.c_str(), times.data(), 0);
}

void copyAndProve(const std::filesystem::path& from, const std::filesystem::path& to,
                  const std::function<Digest(const std::string&, const std::string&)>& copyFile,
                  const std::function<Digest(const std::string&)>& hashFile) {
    std::vector<std::pair<std::string, Digest>> copies;
    std::filesystem::create_directories(to);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(from)) {
        const auto target = to / entry.path().lexically_relative(from);
        if (entry.is_directory())
            std::filesystem::create_directory(target);
        else
            copies.emplace_back(target, copyFile(entry.path(), target));
    }
    const int volume = ::open(to.c_str(), O_RDONLY);
    ::syncfs(volume);
    ::close(volume);
    for (const auto& [path, digest] : copies) {
        if (hashFile(path) != digest)
            fail("mismatch");
    }
}

} // namespace slatewise::bench
