#pragma once

#include <string>
#include <string_view>

/// What this program is called, in reports, in the log and towards others.
namespace slatewise::AppInfo {

inline constexpr std::string_view name = "Slatewise DIT";
/// The build's, "0.1.42.0" for instance.
extern const std::string_view version;
inline constexpr std::string_view bundleID = "com.slatewise.dit";
/// The application's name in a session manifest.
inline constexpr std::string_view manifestApp = "slw-dit";
/// Schema number of the session manifest.
inline constexpr int schemaVersion = 2;
inline constexpr std::string_view websiteLabel = "Slatewise Tools";
/// Where the label leads; settled when the program is built.
extern const std::string_view websiteURL;

/// What a report calls the site at `url`: its host, or the label when it names none.
std::string linkText(std::string_view url);

} // namespace slatewise::AppInfo
