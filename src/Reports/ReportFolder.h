#pragma once

#include "Platform/Clock.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// Names of report folders: readable by a person, and one for each session.
namespace slatewise::ReportFolder {

/// "2026-03-14-091502-A_Unit-ALEXA_35-A001C002": date and time in the machine's time zone, crew,
/// camera and card.
std::string displayName(Instant startedAt, std::string_view ekip, std::string_view camera,
                        std::string_view cardName);

/// The name itself if it is free in `root`, else with the beginning of the session's id behind it.
/// `besides` is a folder that may bear the name: the one that is now being renamed.
std::string uniqueName(const std::string& name, const std::string& sessionID,
                       const std::filesystem::path& root,
                       const std::optional<std::filesystem::path>& besides = std::nullopt);

/// The folder "reports" at a destination's root.
std::filesystem::path destinationReportsRoot(const std::filesystem::path& mountPoint);

} // namespace slatewise::ReportFolder
