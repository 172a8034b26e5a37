#pragma once

#include "Platform/Clock.h"

#include <filesystem>
#include <string_view>

/// The daily log: one plain text file a day, "dit-2026-03-01.log", in the logs folder. Never fails
/// to the caller: a line that cannot be written is lost. May be called on any thread.
namespace slatewise::AppLog {

/// Days for which a log file is kept.
inline constexpr int retentionDays = 30;

/// Writes one line, with the moment in UTC before it. What would tear it or act on a terminal is
/// shown as a sign.
void append(std::string_view message);

/// Deletes the day files in `folder` that are past their time.
void prune(const std::filesystem::path& folder, Instant now);

} // namespace slatewise::AppLog
