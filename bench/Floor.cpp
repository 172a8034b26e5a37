#include "Floor.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace slatewise::bench {

namespace {

constexpr std::size_t kChunkBytes = 1 << 20;
constexpr std::size_t kBlockBytes = 4096;

using Digest = std::array<unsigned char, 32>;

[[noreturn]] void fail(const char* what) {
    throw std::runtime_error(what);
}

struct Hash {
    EVP_MD_CTX* context = EVP_MD_CTX_new();
    Hash() { EVP_DigestInit_ex(context, EVP_sha256(), nullptr); }
    ~Hash() { EVP_MD_CTX_free(context); }
    Hash(const Hash&) = delete;
    Hash& operator=(const Hash&) = delete;

    void add(const void* bytes, std::size_t count) { EVP_DigestUpdate(context, bytes, count); }
    Digest finish() {
        Digest digest;
        EVP_DigestFinal_ex(context, digest.data(), nullptr);
        return digest;
    }
};

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

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

Digest copyFile(const std::string& from, const std::string& to, char* buffer) {
    struct stat facts {};
    ::stat(from.c_str(), &facts);
    const int source = ::open(from.c_str(), O_RDONLY | O_DIRECT);
    const int copy = ::open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_DIRECT, 0644);
    if (source < 0 || copy < 0)
        fail("open");
    Hash hash;
    ssize_t count = 0;
    while ((count = ::read(source, buffer, kChunkBytes)) > 0) {
        hash.add(buffer, static_cast<std::size_t>(count));
        writeChunk(copy, buffer, static_cast<std::size_t>(count));
    }
    if (count < 0 || ::fsync(copy) != 0)
        fail("read or fsync");
    ::close(copy);
    ::close(source);
    ::stat(from.c_str(), &facts);
    const std::array<timespec, 2> times = {timespec{0, UTIME_OMIT}, facts.st_mtim};
    ::utimensat(AT_FDCWD, to.c_str(), times.data(), 0);
    return hash.finish();
}

Digest hashFile(const std::string& path, char* buffer) {
    const int file = ::open(path.c_str(), O_RDONLY | O_DIRECT);
    if (file < 0)
        fail("open");
    Hash hash;
    for (ssize_t count; (count = ::read(file, buffer, kChunkBytes)) > 0;)
        hash.add(buffer, static_cast<std::size_t>(count));
    ::close(file);
    return hash.finish();
}

} // namespace

void copyAtTheFloor(const std::filesystem::path& from, const std::filesystem::path& to) {
    const std::unique_ptr<char, Free> buffer(
        static_cast<char*>(std::aligned_alloc(kBlockBytes, kChunkBytes)));
    std::vector<std::pair<std::string, Digest>> copies;
    std::filesystem::create_directories(to);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(from)) {
        const auto target = to / entry.path().lexically_relative(from);
        if (entry.is_directory())
            std::filesystem::create_directory(target);
        else
            copies.emplace_back(target, copyFile(entry.path(), target, buffer.get()));
    }
    const int volume = ::open(to.c_str(), O_RDONLY);
    ::syncfs(volume);
    ::close(volume);
    for (const auto& [path, digest] : copies) {
        if (hashFile(path, buffer.get()) != digest)
            fail("mismatch");
    }
}

} // namespace slatewise::bench
