#include "Offload/PathSize.h"

#include "Language/L10n.h"
#include "Platform/Numbers.h"

#include <cstdlib>

namespace slatewise::PathSize {

FileSystem::Capacity volumeBytes(const std::filesystem::path& path) {
    return FileSystem::volumeCapacity(path);
}

namespace {
constexpr std::int64_t kFirstWithUnit = 1000;
} // namespace

std::string format(std::int64_t bytes, AppLanguage language) {
    if (language == AppLanguage::Turkish && std::abs(bytes) < kFirstWithUnit)
        return std::to_string(bytes) + " " + std::string(L10n(language).bytesUnit());
    return Numbers::byteCount(bytes, Language::locale(language));
}

std::string speed(double bytesPerSecond, AppLanguage language) {
    return format(static_cast<std::int64_t>(bytesPerSecond), language) + "/" +
           std::string(L10n(language).secondsUnit());
}

std::string report(std::int64_t bytes, AppLanguage language) {
    if (std::abs(bytes) < kFirstWithUnit)
        return format(bytes, language);
    return format(bytes, language) + " (" + grouped(bytes, language) + " " +
           std::string(L10n(language).bytesUnit()) + ")";
}

std::string grouped(std::int64_t bytes, AppLanguage language) {
    return Numbers::grouped(bytes, Language::locale(language));
}

} // namespace slatewise::PathSize
