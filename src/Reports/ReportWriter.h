#pragma once

#include "Language/AppLanguage.h"
#include "Offload/ReportNames.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Files/RootFolder.h"
#include "Reports/ManifestJSON.h"
#include "Reports/SessionManifest.h"
#include "Volumes/VolumeRecords.h"

#include <array>
#include <cstdint>
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
    ReportNames::manifest,     ReportNames::inventory,   ReportNames::checksums,
    ReportNames::standardPage, ReportNames::standardPDF, ReportNames::detailedPage,
    ReportNames::detailedPDF,
};

/// More than the reports of millions of files come to.
inline constexpr std::int64_t largestFileBytes = std::int64_t(8) * 1024 * 1024 * 1024;

/// The record of a session. `files` are the outcome's rows, of which there may be too many to be
/// held twice; those that the outcome itself holds are not looked at.
SessionManifest buildManifest(const OffloadOutcome& outcome, std::vector<FileCopyResult> files,
                              const VolumeFacts& card, const VolumeFacts& destination,
                              const std::string& camera, const std::string& ekip,
                              AppLanguage language);

/// Writes the manifest and the lists of a set, in this order, in the place of those that are there,
/// and waits until they would survive a power cut. A failure leaves out what comes after it; what
/// was written stays.
void writeLists(const SessionManifest& manifest, const RootFolder& folder, AppLanguage language);

/// The same of its pages, which are made side by side. One that cannot be made keeps none of the
/// others from it and is left out; fails when all are done, with what the first of them failed
/// with, which need not be the disk's fault.
void writePages(const SessionManifest& manifest, const RootFolder& folder, AppLanguage language);

/// Copies those files of a set that `from` holds, replaces what `to` holds under these names, and
/// waits until they would survive a power cut, as the footage beside them does. Neither may hold
/// anything but files of at most `largestBytes` under these names: a failure. Gives how many there
/// were; none of a set that is to be copied to itself.
int copySidecars(const RootFolder& from, const RootFolder& to,
                 std::int64_t largestBytes = largestFileBytes);

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
