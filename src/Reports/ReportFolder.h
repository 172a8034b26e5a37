#pragma once

#include "Platform/Clock.h"
#include "Platform/Files/RootFolder.h"
#include "Reports/SessionManifest.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <span>
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
std::string claim(const std::string& name, const std::string& sessionID, const RootFolder& archive,
                  const RootFolder* destination);

/// Takes away what programs that were killed a day ago or longer left of sets that they did not
/// come to finish, and what they had claimed for them, in the archive and beneath the roots of
/// destinations. Never fails.
void removeLeftovers(const RootFolder& archive,
                     std::span<const std::shared_ptr<const RootFolder>> destinations) noexcept;

/// Gets a set into a passing folder, which is new.
using Fill = std::function<void(const RootFolder& passing)>;

/// Has `fill` make a set in a passing folder beneath `root` and gives that the claimed name `set`.
/// When any of it fails nothing of the set stays, as far as the disk allows, and the failure goes
/// on to the caller, whose claim stays.
void putWhole(const RootFolder& root, const std::filesystem::path& set, const Fill& fill);

/// Takes the files of a set of ours away; its folder stays, and claims its name. Gives whether none
/// of them stands there any more. Never fails.
bool clear(const RootFolder& root, const std::filesystem::path& set) noexcept;

/// Takes a folder away in which nothing lies. Never fails.
void removeIfEmpty(const RootFolder& root, const std::filesystem::path& set) noexcept;

/// Both. Never fails.
void remove(const RootFolder& root, const std::filesystem::path& set) noexcept;

/// Where a set lies beneath a destination's root.
std::filesystem::path onDestination(const std::string& name);

/// Whether a name begins as those of all sets do.
bool isNameOfSet(std::string_view name);

/// Whether a folder bears nothing but a session's id, as older versions left them.
bool isOpaqueSessionID(std::string_view name);

/// The folder "reports" at a destination's root.
std::filesystem::path destinationReportsRoot(const std::filesystem::path& mountPoint);

/// Copies a report set to its session's destination, under the given name. Does nothing when the
/// destination is not there, is another disk than the one that holds the set, or has another
/// session's set of that name. A failure is not reported.
void copyToMountedDestination(const RootFolder& from, const SessionManifest& manifest,
                              const std::string& folderName) noexcept;

/// Gives every folder in the archive that is named after a session's id alone a readable name, and
/// copies its set to the session's destination under that name. What cannot be read, moved or
/// copied stays as it is and is met again the next time. Never fails; a second call changes
/// nothing.
void migrateReadableNames(const std::filesystem::path& archive) noexcept;

/// The same of the reports on a disk. Where these are a link, or another disk, they are left alone.
void migrateDisk(const std::filesystem::path& mountPoint) noexcept;

} // namespace slatewise::ReportFolder
