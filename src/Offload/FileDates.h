#pragma once

#include "Offload/OffloadRows.h"
#include "Platform/Files/FileSystem.h"

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <tuple>

namespace slatewise {

/// By which a file is known to be the one that was read, or not.
struct FileDates {
    /// Of its content, in seconds.
    std::int64_t modified = 0;
    /// Of the last change of whatever kind, which nobody can set.
    timespec changed{};
    /// Of the file in its file system; 0 where a file has no number of its own.
    std::uint64_t number = 0;

    /// `haveNumbers` as `FileSystemType::keepsFileNumbers` says.
    static FileDates of(const FileSystem::Attributes& attributes, bool haveNumbers) {
        return {attributes.exactModified.value_or(timespec{}).tv_sec,
                attributes.changed.value_or(timespec{}), haveNumbers ? attributes.number : 0};
    }
    static FileDates of(const InventoryEntry& entry) {
        return {entry.changes[0], {entry.changes[2], entry.changes[3]}};
    }

    /// Whether the dates of both contents are further apart than the two seconds of the coarsest
    /// file systems.
    bool isOfOtherContent(const FileDates& earlier) const {
        constexpr std::int64_t kCoarsest = 2;
        return std::abs(modified - earlier.modified) > kCoarsest;
    }

    /// Another file may have come with its folder, which changes no date of the file; and a clock
    /// may be set back, so that a later change has an earlier date. `areKept` as
    /// `FileSystemType::keepsChangeDates` says: what is forgotten is shown as an earlier date.
    bool isTouchedSince(const FileDates& earlier, bool areKept) const {
        const auto now = std::tie(changed.tv_sec, changed.tv_nsec);
        const auto then = std::tie(earlier.changed.tv_sec, earlier.changed.tv_nsec);
        return number != earlier.number || (areKept ? now != then : now > then);
    }
};

} // namespace slatewise
