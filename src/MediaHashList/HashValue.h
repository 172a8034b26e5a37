#pragma once

#include "Platform/RawWords.h"

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace slatewise::MediaHashList {

/// The kinds of values that a generation may hold, in the order in which they stand there.
enum class HashFormat { C4, MD5, SHA1, XXH128, XXH64 };

inline constexpr std::array kHashFormats = {HashFormat::C4, HashFormat::MD5, HashFormat::SHA1,
                                            HashFormat::XXH128, HashFormat::XXH64};

/// Their names as elements of a generation.
constexpr std::array<std::string_view, 5> rawWords(HashFormat) {
    return {"c4", "md5", "sha1", "xxh128", "xxh64"};
}

/// A running hash of one format. Feed it, then take the text once. One thread at a time. Fails with
/// `Error` when the libraries cannot compute the format.
class Hasher {
public:
    explicit Hasher(HashFormat format);
    ~Hasher();
    Hasher(Hasher&&) noexcept;

    void update(std::span<const std::byte> bytes);
    /// The value as it stands in a generation: a C4 ID, or lower-case hexadecimal digits.
    std::string finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// The value of some bytes.
std::string hashOf(HashFormat format, std::string_view bytes);

/// Whether a text can be a value of the format at all.
bool isValue(HashFormat format, std::string_view text);

/// The bytes that a value stands for. Fails with `Error` when it is no value of the format.
std::string bytesOf(HashFormat format, std::string_view value);

/// The value of a list of values, in whatever order they come.
std::string hashOfList(HashFormat format, std::vector<std::string> values);

} // namespace slatewise::MediaHashList
