#pragma once

#include <fcntl.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

/// What the plain ways of copying share: bare system calls and the hash, and nothing of the
/// program's own code.
namespace slatewise::bench {

constexpr std::size_t kChunkBytes = 1 << 20;
constexpr std::size_t kBlockBytes = 4096;

using Digest = std::array<unsigned char, 32>;

[[noreturn]] void fail(const char* what);

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
using Buffer = std::unique_ptr<char, Free>;

/// Of one chunk, aligned for direct transfers.
Buffer chunkBuffer();

int openSource(const std::string& path);
int openCopy(const std::string& path);

void writeChunk(int file, const char* bytes, std::size_t count);

/// Syncs the copy, closes both and sets the source's date.
void finishCopy(int source, int copy, const std::string& from, const std::string& to);

/// Copies a tree by `copyFile`, syncs the volume, and compares what `hashFile` says of each copy.
void copyAndProve(const std::filesystem::path& from, const std::filesystem::path& to,
                  const std::function<Digest(const std::string&, const std::string&)>& copyFile,
                  const std::function<Digest(const std::string&)>& hashFile);

} // namespace slatewise::bench
