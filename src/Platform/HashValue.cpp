#include "Platform/HashValue.h"

#include "Platform/Error.h"

#include <openssl/evp.h>
#include <xxhash.h>

#include <algorithm>
#include <new>

namespace slatewise {

namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr std::string_view kC4Digits = "123456789ABCDEFGHJKLMNPQRSTUVWXYZabcdefghijkmnopqrstuvwxyz";
constexpr std::string_view kC4Prefix = "c4";
constexpr std::size_t kC4Length = 90;
constexpr std::size_t kSha512Bytes = 64;

std::size_t byteCount(HashFormat format) {
    switch (format) {
    case HashFormat::C4:
        return kSha512Bytes;
    case HashFormat::MD5:
    case HashFormat::XXH128:
        return 16;
    case HashFormat::SHA1:
        return 20;
    case HashFormat::SHA256:
        return 32;
    case HashFormat::XXH3:
    case HashFormat::XXH64:
        return 8;
    }
    return 0;
}

const EVP_MD* digestOf(HashFormat format) {
    switch (format) {
    case HashFormat::C4:
        return EVP_sha512();
    case HashFormat::MD5:
        return EVP_md5();
    case HashFormat::SHA1:
        return EVP_sha1();
    case HashFormat::SHA256:
        return EVP_sha256();
    default:
        return nullptr;
    }
}

std::string hex(std::string_view bytes) {
    std::string text;
    text.reserve(2 * bytes.size());
    for (const char byte : bytes) {
        text += kHexDigits[static_cast<unsigned char>(byte) >> 4];
        text += kHexDigits[static_cast<unsigned char>(byte) & 0x0f];
    }
    return text;
}

/// One big number, in base 58 and of a fixed length.
std::string c4(std::string_view sha512) {
    std::string number(sha512);
    std::string text(kC4Length, kC4Digits.front());
    for (auto digit = text.rbegin(); digit != text.rend(); ++digit) {
        unsigned remainder = 0;
        for (auto& byte : number) {
            const unsigned value = remainder << 8 | static_cast<unsigned char>(byte);
            byte = static_cast<char>(value / kC4Digits.size());
            remainder = static_cast<unsigned>(value % kC4Digits.size());
        }
        *digit = kC4Digits[remainder];
    }
    return text.replace(0, kC4Prefix.size(), kC4Prefix);
}

/// Empty when the number is larger than a SHA-512 can be.
std::string sha512Of(std::string_view id) {
    std::string number(kSha512Bytes, '\0');
    for (const char digit : id.substr(kC4Prefix.size())) {
        auto carry = static_cast<unsigned>(kC4Digits.find(digit));
        for (auto byte = number.rbegin(); byte != number.rend(); ++byte) {
            carry += static_cast<unsigned>(kC4Digits.size()) * static_cast<unsigned char>(*byte);
            *byte = static_cast<char>(carry);
            carry >>= 8;
        }
        if (carry > 0)
            return {};
    }
    return number;
}

template <typename Canonical>
std::string_view view(const Canonical& canonical) {
    return {reinterpret_cast<const char*>(canonical.digest), sizeof canonical.digest};
}

} // namespace

struct Hasher::State {
    HashFormat format;
    EVP_MD_CTX* digest = nullptr;
    XXH3_state_t* xxh3 = nullptr;
    XXH64_state_t* xxh64 = nullptr;

    explicit State(HashFormat wanted) : format(wanted) {
        bool isReady = false;
        if (format == HashFormat::XXH128) {
            xxh3 = XXH3_createState();
            isReady = xxh3 && XXH3_128bits_reset(xxh3) == XXH_OK;
        } else if (format == HashFormat::XXH3) {
            xxh3 = XXH3_createState();
            isReady = xxh3 && XXH3_64bits_reset(xxh3) == XXH_OK;
        } else if (format == HashFormat::XXH64) {
            xxh64 = XXH64_createState();
            isReady = xxh64 && XXH64_reset(xxh64, 0) == XXH_OK;
        } else {
            digest = EVP_MD_CTX_new();
            isReady = digest && EVP_DigestInit_ex(digest, digestOf(format), nullptr) == 1;
        }
        if (!isReady) {
            if (!digest && !xxh3 && !xxh64)
                throw std::bad_alloc();
            release();
            throw Error(std::string(rawValue(format)) + " is not available");
        }
    }
    ~State() { release(); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    void release() {
        EVP_MD_CTX_free(digest);
        XXH3_freeState(xxh3);
        XXH64_freeState(xxh64);
    }
};

Hasher::Hasher(HashFormat format) : state_(std::make_unique<State>(format)) {}
Hasher::~Hasher() = default;
Hasher::Hasher(Hasher&&) noexcept = default;

void Hasher::update(std::span<const std::byte> bytes) {
    // The libraries do not agree on what no bytes at no address are.
    if (bytes.empty())
        return;
    bool isDone = false;
    if (state_->format == HashFormat::XXH3)
        isDone = XXH3_64bits_update(state_->xxh3, bytes.data(), bytes.size()) == XXH_OK;
    else if (state_->xxh3)
        isDone = XXH3_128bits_update(state_->xxh3, bytes.data(), bytes.size()) == XXH_OK;
    else if (state_->xxh64)
        isDone = XXH64_update(state_->xxh64, bytes.data(), bytes.size()) == XXH_OK;
    else
        isDone = EVP_DigestUpdate(state_->digest, bytes.data(), bytes.size()) == 1;
    if (!isDone)
        throw Error(std::string(rawValue(state_->format)) + " is not available");
}

std::string Hasher::finish() {
    if (state_->format == HashFormat::XXH3) {
        XXH64_canonical_t canonical;
        XXH64_canonicalFromHash(&canonical, XXH3_64bits_digest(state_->xxh3));
        return hex(view(canonical));
    }
    if (state_->xxh3) {
        XXH128_canonical_t canonical;
        XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(state_->xxh3));
        return hex(view(canonical));
    }
    if (state_->xxh64) {
        XXH64_canonical_t canonical;
        XXH64_canonicalFromHash(&canonical, XXH64_digest(state_->xxh64));
        return hex(view(canonical));
    }
    std::string bytes(byteCount(state_->format), '\0');
    if (EVP_DigestFinal_ex(state_->digest, reinterpret_cast<unsigned char*>(bytes.data()),
                           nullptr) != 1)
        throw Error(std::string(rawValue(state_->format)) + " is not available");
    return state_->format == HashFormat::C4 ? c4(bytes) : hex(bytes);
}

PassHasher::PassHasher(std::span<const HashFormat> formats) {
    running_.reserve(formats.size());
    for (const auto format : formats)
        running_.push_back({format, Hasher(format)});
}

void PassHasher::update(std::span<const std::byte> bytes) {
    for (auto& each : running_)
        each.hasher.update(bytes);
}

HashValues PassHasher::finish() {
    HashValues values;
    values.reserve(running_.size());
    for (auto& each : running_)
        values.push_back({each.format, each.hasher.finish()});
    return values;
}

std::string_view valueOf(const HashValues& values, HashFormat format) {
    const auto found = std::find_if(values.begin(), values.end(),
                                    [&](const auto& value) { return value.format == format; });
    return found == values.end() ? std::string_view() : found->text;
}

std::string hashOf(HashFormat format, std::string_view bytes) {
    Hasher hasher(format);
    hasher.update(std::as_bytes(std::span(bytes)));
    return hasher.finish();
}

bool isValue(HashFormat format, std::string_view text) {
    if (format != HashFormat::C4) {
        return text.size() == 2 * byteCount(format) &&
               text.find_first_not_of(kHexDigits) == std::string_view::npos;
    }
    return text.size() == kC4Length && text.starts_with(kC4Prefix) &&
           text.find_first_not_of(kC4Digits, kC4Prefix.size()) == std::string_view::npos &&
           !sha512Of(text).empty();
}

std::string bytesOf(HashFormat format, std::string_view value) {
    if (!isValue(format, value))
        throw Error(std::string(value) + " is no " + std::string(rawValue(format)));
    if (format == HashFormat::C4)
        return sha512Of(value);
    std::string bytes;
    for (std::size_t at = 0; at < value.size(); at += 2)
        bytes +=
            static_cast<char>(kHexDigits.find(value[at]) << 4 | kHexDigits.find(value[at + 1]));
    return bytes;
}

std::string hashOfList(HashFormat format, std::vector<std::string> values) {
    std::sort(values.begin(), values.end());
    Hasher hasher(format);
    for (const auto& value : values) {
        const auto bytes = bytesOf(format, value);
        hasher.update(std::as_bytes(std::span(bytes)));
    }
    return hasher.finish();
}

} // namespace slatewise
