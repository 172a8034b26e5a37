#pragma once

#include "Language/AppLanguage.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Files/RootFolder.h"
#include "Reports/ManifestJSON.h"
#include "Reports/SessionManifest.h"
#include "Volumes/VolumeRecords.h"

#include <array>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Makes the report set that travels with the footage. Without state; blocks its caller. What
/// touches the disk fails with `PosixError`.
namespace slatewise::ReportWriter {

/// The files of a set, in the order in which they are written and copied.
inline constexpr std::array<std::string_view, 7> fileNames = {
    "manifest.json",         "inventory.csv",        "checksums.sha256",
    "Reports_Standart.html", "Reports_Standart.pdf", "Reports_Detailed.html",
    "Reports_Detailed.pdf",
};

/// The record of a session. `files` are the outcome's rows, of which there may be too many to be
/// held twice; those that the outcome itself holds are not looked at.
SessionManifest buildManifest(const OffloadOutcome& outcome, std::vector<FileCopyResult> files,
                              const VolumeFacts& card, const VolumeFacts& destination,
                              const std::string& camera, const std::string& ekip,
                              AppLanguage language);

/// Writes the set into a folder, which is made with its parents, and waits until it would survive a
/// power cut. The manifest comes first, then the lists, and once these are on the disk the reports,
/// side by side. A failure leaves out what comes after it; what was written stays.
void write(const SessionManifest& manifest, const std::filesystem::path& folder,
           AppLanguage language);

/// Copies those files of a set that `from` holds into a folder beneath a disk's root, which is made
/// if need be, replaces what that holds under these names, and waits until they would survive a
/// power cut, as the footage beside them does. Neither set may hold anything but files under these
/// names, nor may a link stand on the way: a failure.
void copySidecars(const RootFolder& from, const RootFolder& disk, const std::filesystem::path& to);

/// How many distinct folders the files' paths imply.
int folderCount(std::span<const ManifestFile> files);

/// Passes on the text of "inventory.csv": a header and one row per file. The language shows in the
/// words of the human size only.
void inventoryCSV(const SessionManifest& manifest, AppLanguage language,
                  const FileSystem::TextSink& put);

/// Passes on the text of "checksums.sha256": one line per proved file, as `sha256sum --check` reads
/// it from inside the session's folder; where nothing was to be copied, one per hashed file, to be
/// read on the card.
void checksumList(const SessionManifest& manifest, const FileSystem::TextSink& put);

} // namespace slatewise::ReportWriter
