#include "MxfTimecode.h"

#include <algorithm>
#include <cstdint>

namespace slatewise::MxfTimecode {

namespace {

/// The key of the set that describes a timecode, and the tag of its base in there.
constexpr std::string_view
    kSetKey("\x06\x0e\x2b\x34\x02\x53\x01\x01\x0d\x01\x01\x01\x01\x01\x14\x00", 16);
constexpr std::uint64_t kBaseTag = 0x1502;

std::uint64_t bigEndian(std::string_view bytes) {
    std::uint64_t number = 0;
    for (const char byte : bytes)
        number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

/// Takes so many bytes away from the front, or as many as there are.
std::string_view take(std::string_view& bytes, std::uint64_t count) {
    const auto taken = bytes.substr(0, count);
    bytes.remove_prefix(taken.size());
    return taken;
}

/// What follows a key. Its length stands in one byte, or in as many as that says.
std::string_view payload(std::string_view behindKey) {
    constexpr std::uint64_t kLong = 0x80;
    auto length = bigEndian(take(behindKey, 1));
    if (length >= kLong)
        length = bigEndian(take(behindKey, std::min<std::uint64_t>(length - kLong, sizeof length)));
    return take(behindKey, length);
}

} // namespace

std::optional<FrameRate> roundedRate(std::string_view head) {
    for (auto at = head.find(kSetKey); at != std::string_view::npos;
         at = head.find(kSetKey, at + kSetKey.size())) {
        auto items = payload(head.substr(at + kSetKey.size()));
        while (!items.empty()) {
            const auto tag = bigEndian(take(items, 2));
            const auto value = take(items, bigEndian(take(items, 2)));
            if (tag == kBaseTag && value.size() == 2)
                return FrameRate::of(static_cast<std::int64_t>(bigEndian(value)), 1);
        }
    }
    return std::nullopt;
}

} // namespace slatewise::MxfTimecode
