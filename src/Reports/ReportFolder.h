#pragma once

#include "Platform/Clock.h"
#include "Platform/Files/RootFolder.h"
#include "Reports/SessionManifest.h"

#include <filesystem>
#include <string>
#include <string_view>

/// Names of report folders: readable by a person, and one for each session. Without state; what
/// touches the disk blocks its caller, on any thread.
namespace slatewise::ReportFolder {

/// "2026-03-14-091502-A_Unit-ALEXA_35-A001C002": date and time in the machine's time zone, crew,
/// camera and card.
std::string displayName(Instant startedAt, std::string_view ekip, std::string_view camera,
                        std::string_view cardName);

/// The name itself if it is free in `root`, else with the beginning of the session's id behind it.
/// `besides` is the name of a folder there that is now being renamed; it may stay.
std::string uniqueName(const std::string& name, const std::string& sessionID,
                       const RootFolder& root, std::string_view besides = {});

/// Makes the folders of a session's set, in the archive and beneath the destination's root, under
/// one name that is free in both: `name`, else with the beginning of the session's id behind it,
/// else with a number too. Nobody else, in whatever program, gets the same. Fails with `PosixError`
/// when the archive takes no folder. A destination that takes none is passed over: who copies the
/// set there learns why. Without a destination the name is the archive's alone.
std::string claim(const std::string& name, const std::string& sessionID,
                  const std::filesystem::path& archive, const RootFolder* destination);

/// Where a set lies beneath a destination's root.
std::filesystem::path onDestination(const std::string& name);

/// Whether a folder bears nothing but a session's id, as older versions left them.
bool isOpaqueSessionID(std::string_view name);

/// The folder "reports" at a destination's root.
std::filesystem::path destinationReportsRoot(const std::filesystem::path& mountPoint);

/// Copies a report set to its session's destination, under the given name. Does nothing when the
/// destination is not there or is another disk than the one that holds the set. A failure is not
/// reported.
void copyToMountedDestination(const RootFolder& from, const SessionManifest& manifest,
                              const std::string& folderName) noexcept;

/// Gives every folder in `root` that is named after a session's id alone a readable name, and
/// copies its set to the session's destination under that name. What cannot be read, moved or
/// copied stays as it is and is met again the next time; a root that is a link is left alone. Never
/// fails; a second call changes nothing.
void migrateReadableNames(const std::filesystem::path& root) noexcept;

} // namespace slatewise::ReportFolder
