#pragma once

#include "Language/AppLanguage.h"
#include "Platform/Files/FileSystem.h"

#include <cstdint>
#include <filesystem>
#include <string>

/// Sizes of volumes, and byte counts as text.
namespace slatewise::PathSize {

/// Total and free bytes of the volume that holds `path`; 0 stands for unknown. Never fails.
FileSystem::Capacity volumeBytes(const std::filesystem::path& path);

/// "1.2 MB", in Turkish "1,2 MB", whatever the machine's own language.
std::string format(std::int64_t bytes, AppLanguage language);

/// "1.2 MB/s", in Turkish "1,2 MB/sn".
std::string speed(double bytesPerSecond, AppLanguage language);

/// "1.2 MB (1,234,567 bytes)"; below a thousand, "5 bytes".
std::string report(std::int64_t bytes, AppLanguage language);

/// "1,234,567", grouped as the language does.
std::string grouped(std::int64_t bytes, AppLanguage language);

} // namespace slatewise::PathSize
