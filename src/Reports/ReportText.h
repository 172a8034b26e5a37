#pragma once

#include "Language/AppLanguage.h"
#include "Platform/Clock.h"
#include "Reports/SessionManifest.h"

#include <string>
#include <string_view>
#include <vector>

/// Small texts that the reports share. Without state; any thread may ask.
namespace slatewise::ReportText {

/// "Mar 1, 2026, 9:30 AM": as people of the language write it, in the machine's time zone.
std::string dateTime(Instant moment, AppLanguage language);

/// "2026-03-01 09:30:15", in the machine's time zone.
std::string fileModified(Instant moment);

/// A plain number, or several in one text, with the decimal mark of the language: "23,976".
std::string number(std::string plain, AppLanguage language);

/// A date as cameras write it ("UTC 20260301 093015", "2026-03-01T09:30:15", "20260301") in the
/// words of the language. What is no such date comes back as it is, but trimmed; the zero that a
/// camera without a clock writes comes back as nothing.
std::string formatClipDate(std::string_view text, AppLanguage language);

/// Timecode range, duration and rates of a file: at most three lines, without those that would say
/// nothing.
std::vector<std::string> timingLines(const ManifestFile& file, AppLanguage language);

/// What all clips of a card share, on one line. Empty when nothing is known.
std::string cardFactsLine(const ClipEssence& essence, AppLanguage language);

} // namespace slatewise::ReportText
