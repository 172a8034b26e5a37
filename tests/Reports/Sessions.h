#pragma once

#include "Language/AppLanguage.h"
#include "Reports/SessionManifest.h"

#include <string>
#include <vector>

/// Sessions for tests of what the reports look like.
namespace slatewise::test {

inline constexpr auto kEnglish = AppLanguage::English;
inline constexpr auto kTurkish = AppLanguage::Turkish;

/// What the foot of every page says.
extern const std::string kVersion;

/// A copy that was proved, of 1,234,567 bytes and with the digest "aaa…".
ManifestFile copiedFile(const std::string& path);

/// The same, with the picture and the timecode of a recording.
ManifestFile copiedClip(const std::string& path, double captureFps, double timecodeRate);

/// A session of a card with an odd name, which began at 09:30:15 UTC on 2026-03-01.
SessionManifest sessionOf(std::vector<ManifestFile> files);

} // namespace slatewise::test
