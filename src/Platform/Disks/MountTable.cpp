#include "Platform/Disks/MountTable.h"

#include "Platform/Disks/BlockDevices.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace slatewise::MountTable {

namespace {

// Places of the fields before the optional ones, which end with a dash.
constexpr std::size_t kDevice = 2;
constexpr std::size_t kRoot = 3;
constexpr std::size_t kMountPoint = 4;
constexpr std::size_t kMountOptions = 5;
constexpr std::size_t kFirstOptional = 6;
// Places behind the dash; the options of the file system come last.
constexpr std::ptrdiff_t kFileSystem = 1;
constexpr std::ptrdiff_t kSource = 2;

bool isOctal(char digit) {
    return digit >= '0' && digit <= '7';
}

/// Blanks, line ends and backslashes are written as "\" and three octal digits.
std::string unescaped(std::string_view field) {
    constexpr std::size_t kDigits = 3;
    std::string result;
    for (std::size_t at = 0; at < field.size(); ++at) {
        const auto digits = field.substr(at + 1, kDigits);
        if (field[at] != '\\' || digits.size() < kDigits ||
            !std::all_of(digits.begin(), digits.end(), isOctal)) {
            result += field[at];
            continue;
        }
        unsigned code = 0;
        std::from_chars(digits.data(), digits.data() + kDigits, code, 8);
        result += static_cast<char>(code);
        at += kDigits;
    }
    return result;
}

bool saysReadOnly(std::string_view options) {
    const auto each = Text::pieces(options, ',');
    return std::find(each.begin(), each.end(), "ro") != each.end();
}

std::optional<Mount> parseLine(std::string_view line) {
    const auto fields = Text::pieces(line, ' ');
    if (fields.size() < kFirstOptional)
        return std::nullopt;
    const auto dash = std::find(fields.begin() + kFirstOptional, fields.end(), "-");
    const auto device = BlockDevices::parseNumbers(fields[kDevice]);
    if (!device || fields.end() - dash <= kSource)
        return std::nullopt;
    const bool hasSource = fields.end() - dash > kSource + 1;
    return Mount{.line = std::string(line),
                 .device = *device,
                 .root = unescaped(fields[kRoot]),
                 .mountPoint = unescaped(fields[kMountPoint]),
                 .fileSystem = unescaped(dash[kFileSystem]),
                 .source = hasSource ? unescaped(dash[kSource]) : std::string(),
                 .isReadOnly = saysReadOnly(fields[kMountOptions]) || saysReadOnly(fields.back())};
}

bool lies(const std::filesystem::path& path, const std::filesystem::path& folder) {
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first ==
           folder.end();
}

} // namespace

std::vector<Mount> parse(std::string_view text) {
    std::vector<Mount> mounts;
    for (const auto line : Text::pieces(text, '\n')) {
        if (auto mount = parseLine(line))
            mounts.push_back(std::move(*mount));
    }
    return mounts;
}

std::vector<Mount> read(const std::filesystem::path& table) {
    try {
        return parse(FileSystem::read(table));
    } catch (const PosixError&) {
        return {};
    }
}

const Mount* at(const std::vector<Mount>& mounts, const std::filesystem::path& mountPoint) {
    const auto last = std::find_if(mounts.rbegin(), mounts.rend(), [&](const Mount& mount) {
        return mount.mountPoint == mountPoint;
    });
    return last == mounts.rend() ? nullptr : &*last;
}

const Mount* holding(const std::vector<Mount>& mounts, const std::filesystem::path& path) {
    const Mount* deepest = nullptr;
    for (const auto& mount : mounts) {
        if (lies(path, mount.mountPoint) &&
            (!deepest || mount.mountPoint.native().size() >= deepest->mountPoint.native().size()))
            deepest = &mount;
    }
    return deepest;
}

} // namespace slatewise::MountTable
