#include "Platform/Disks/DeviceRecords.h"

#include "Platform/Disks/BlockDevices.h"
#include "Platform/Disks/SysfsDisks.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"

#include <algorithm>
#include <charconv>

namespace slatewise::DeviceRecords {

namespace {

/// What is no letter, digit or harmless sign is written as "\x" and two hexadecimal digits.
std::string unescaped(std::string_view value) {
    constexpr std::string_view kEscape = "\\x";
    constexpr std::size_t kLength = 4;
    std::string result;
    while (!value.empty()) {
        unsigned code = 0;
        const auto* const end = value.data() + std::min(value.size(), kLength);
        const bool isEscape =
            value.starts_with(kEscape) && value.size() >= kLength &&
            std::from_chars(value.data() + kEscape.size(), end, code, 16).ptr == end;
        result += isEscape ? static_cast<char>(code) : value.front();
        value.remove_prefix(isEscape ? kLength : 1);
    }
    return result;
}

} // namespace

void addTo(DiskFacts& facts, dev_t numbers, const std::filesystem::path& sys,
           const std::filesystem::path& records) {
    std::string record;
    try {
        record = FileSystem::read(records / ("b" + BlockDevices::text(numbers)));
    } catch (const PosixError&) {
        return;
    }
    const auto medium = SysfsDisks::ownMediumNumber(numbers, sys);
    auto found = facts;
    const auto take = [](std::string_view line, std::string_view key, std::string& value) {
        if (line.starts_with(key))
            value = unescaped(line.substr(key.size()));
    };
    for (const auto line : Text::pieces(record, '\n')) {
        std::string recordedMedium = medium;
        take(line, "S:disk/by-diskseq/", recordedMedium);
        // "7", and in some versions "7-part1" for what lies in it.
        if (!medium.empty() && recordedMedium.substr(0, recordedMedium.find('-')) != medium)
            return;
        take(line, "E:ID_FS_LABEL_ENC=", found.label);
        take(line, "E:ID_FS_UUID_ENC=", found.uuid);
        take(line, "E:ID_FS_TYPE=", found.fileSystem);
        take(line, "E:ID_FS_VERSION=", found.fileSystemVersion);
    }
    facts = found;
}

} // namespace slatewise::DeviceRecords
