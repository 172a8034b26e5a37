#pragma once

#include <string_view>

/// What a report set is called and made of. None of these ever changes: people and programs look
/// for them by name.
namespace slatewise::ReportNames {

/// The folder of all sets, at the root of a disk.
inline constexpr std::string_view folder = "reports";

inline constexpr std::string_view manifest = "manifest.json";
inline constexpr std::string_view inventory = "inventory.csv";
inline constexpr std::string_view checksums = "checksums.sha256";
inline constexpr std::string_view standardPage = "Reports_Standart.html";
inline constexpr std::string_view standardPDF = "Reports_Standart.pdf";
inline constexpr std::string_view detailedPage = "Reports_Detailed.html";
inline constexpr std::string_view detailedPDF = "Reports_Detailed.pdf";

/// What the pages call themselves.
inline constexpr std::string_view standard = "Reports_Standart";
inline constexpr std::string_view detailed = "Reports_Detailed";

} // namespace slatewise::ReportNames
