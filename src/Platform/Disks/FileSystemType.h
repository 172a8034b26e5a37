#pragma once

#include <cstdint>
#include <filesystem>

/// Which file systems are which, by what the kernel calls them. Each call blocks as the disk does;
/// any thread; none fails.
namespace slatewise::FileSystemType {

/// One of the numbers of <linux/magic.h>; 0 when it cannot be learnt.
std::uint32_t under(const std::filesystem::path& path) noexcept;

/// Whether a file has one number for as long as it exists. Others are given a new one whenever the
/// system has forgotten them meanwhile.
bool keepsFileNumbers(const std::filesystem::path& path) noexcept;

/// Whether a file keeps the date of its last change as it was. FAT and exFAT forget it, and what
/// runs outside the kernel may, and show another one instead.
bool keepsChangeDates(const std::filesystem::path& path) noexcept;

} // namespace slatewise::FileSystemType
