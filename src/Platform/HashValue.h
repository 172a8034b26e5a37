#pragma once

#include "Platform/RawWords.h"

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace slatewise {

/// The kinds of values that are computed of a file's bytes.
enum class HashFormat { C4, MD5, SHA1, SHA256, XXH128, XXH3, XXH64 };

constexpr std::array<std::string_view, 7> rawWords(HashFormat) {
    return {"c4", "md5", "sha1", "sha256", "xxh128", "xxh3", "xxh64"};
}

/// A value of one format: a C4 ID, or lower-case hexadecimal digits.
struct HashValue {
    HashFormat format = HashFormat::SHA256;
    std::string text;

    friend bool operator==(const HashValue&, const HashValue&) = default;
};

/// One for each format.
using HashValues = std::vector<HashValue>;

/// Empty when there is none of that format.
std::string_view valueOf(const HashValues& values, HashFormat format);

/// A running hash of one format. Feed it, then take the text once. One thread at a time. Fails with
/// `Error` when the libraries cannot compute the format: a value that was not fully computed must
/// never be compared with anything.
class Hasher {
public:
    explicit Hasher(HashFormat format);
    ~Hasher();
    Hasher(Hasher&&) noexcept;

    void update(std::span<const std::byte> bytes);
    std::string finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// All values that are wanted of one pass over a file's bytes. As `Hasher`.
class PassHasher {
public:
    explicit PassHasher(std::span<const HashFormat> formats);

    void update(std::span<const std::byte> bytes);
    /// In the order of the formats.
    HashValues finish();

private:
    struct Running {
        HashFormat format;
        Hasher hasher;
    };
    std::vector<Running> running_;
};

/// The value of some bytes.
std::string hashOf(HashFormat format, std::string_view bytes);

/// Whether a text can be a value of the format at all.
bool isValue(HashFormat format, std::string_view text);

/// The bytes that a value stands for. Fails with `Error` when it is no value of the format.
std::string bytesOf(HashFormat format, std::string_view value);

/// The value of a list of values, in whatever order they come.
std::string hashOfList(HashFormat format, std::vector<std::string> values);

} // namespace slatewise
