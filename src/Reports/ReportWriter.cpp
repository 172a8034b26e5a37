#include "Reports/ReportWriter.h"

#include "Language/L10n.h"
#include "Platform/AppInfo.h"
#include "Platform/Files/FileCopy.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"
#include "Reports/ReportTree.h"
#include "Reports/SessionDetailedHTML.h"
#include "Reports/SessionDetailedPDF.h"
#include "Reports/SessionHTML.h"
#include "Reports/SessionPDF.h"

#include <algorithm>
#include <array>
#include <functional>
#include <future>
#include <span>
#include <unordered_set>
#include <utility>

namespace slatewise::ReportWriter {

namespace {

/// More than the reports of millions of files come to.
constexpr std::int64_t kLargestReportBytes = std::int64_t(8) * 1024 * 1024 * 1024;

ManifestVolume describeCard(const VolumeFacts& card, const std::string& camera,
                            const std::string& ekip) {
    return {.name = card.volumeName,
            .volumeUUID = card.volumeUUID,
            .deviceIdentifier = card.deviceIdentifier,
            .fileSystem = card.fileSystem,
            .protocolName = card.protocolName,
            .totalBytes = card.totalBytes,
            .mountPoint = card.mountPoint.native(),
            .camera = Text::pathSafeLabel(camera),
            .ekip = Text::trimmed(ekip)};
}

ManifestCounts count(std::span<const ManifestFile> files, std::int64_t bytesCopied) {
    const auto number = [&](auto&& isOne) {
        return static_cast<int>(std::count_if(files.begin(), files.end(), isOne));
    };
    return {.folders = folderCount(files),
            .filesCopied = number([](const ManifestFile& file) {
                return file.action == RowAction::Copy &&
                       file.verifyStatus == VerifyStatus::Verified;
            }),
            .filesHashed = number([](const ManifestFile& file) {
                return file.action == RowAction::Hash && file.verifyStatus == VerifyStatus::Hashed;
            }),
            .filesSkippedSystem =
                number([](const ManifestFile& file) { return file.action == RowAction::Skip; }),
            .filesFailed =
                number([](const ManifestFile& file) { return file.action == RowAction::Fail; }),
            .bytesCopied = bytesCopied};
}

} // namespace

SessionManifest buildManifest(const OffloadOutcome& outcome, std::vector<FileCopyResult> files,
                              const VolumeFacts& card, const VolumeFacts& destination,
                              const std::string& camera, const std::string& ekip,
                              AppLanguage language) {
    SessionManifest manifest;
    manifest.schemaVersion = AppInfo::schemaVersion;
    manifest.app = AppInfo::manifestApp;
    manifest.appVersion = AppInfo::version;
    manifest.sessionID = outcome.sessionID.text();
    manifest.startedAt = outcome.startedAt;
    manifest.finishedAt = outcome.finishedAt;
    manifest.status = outcome.status;
    manifest.hashLists = outcome.hashLists;
    for (const auto& problem : outcome.problems) {
        const bool isFailure = problem.severity() == OffloadProblem::Severity::Failure;
        (isFailure ? manifest.problems : manifest.notes).push_back(problem.text(L10n(language)));
    }
    manifest.hashAlgorithm = "sha256";
    manifest.card = describeCard(card, camera, ekip);
    manifest.destination = {.name = destination.volumeName,
                            .volumeUUID = destination.volumeUUID,
                            .mountPoint = destination.mountPoint.native(),
                            .sessionRoot = outcome.sessionRoot.native()};
    manifest.files = std::move(files);
    manifest.counts = count(manifest.files, outcome.bytesCopied);
    return manifest;
}

void write(const SessionManifest& manifest, const std::filesystem::path& folder,
           AppLanguage language) {
    FileSystem::createFolders(folder);
    using FileSystem::TextSink;
    FileSystem::writeAtomically(folder / "manifest.json",
                                [&](const TextSink& put) { isoEncode(manifest, put); });
    FileSystem::write(folder / "inventory.csv",
                      [&](const TextSink& put) { inventoryCSV(manifest, language, put); });
    FileSystem::write(folder / "checksums.sha256",
                      [&](const TextSink& put) { checksumList(manifest, put); });
    const auto tree = ReportTree::build(manifest.files);
    const auto writing = [&](auto* write, const char* name) {
        return std::async(std::launch::async, write, std::cref(manifest), std::span(tree),
                          folder / name, language);
    };
    // Each of them waits for those begun when it goes.
    std::array reports = {writing(SessionHTML::write, "Reports_Standart.html"),
                          writing(SessionPDF::write, "Reports_Standart.pdf"),
                          writing(SessionDetailedHTML::write, "Reports_Detailed.html"),
                          writing(SessionDetailedPDF::write, "Reports_Detailed.pdf")};
    for (auto& report : reports)
        report.get();
    FileSystem::syncFolder(folder);
    FileSystem::syncFolder(folder.parent_path());
}

void copySidecars(const RootFolder& from, const RootFolder& disk, const std::filesystem::path& to) {
    disk.createFolders(to);
    const auto target = disk.below(to);
    // A user may have put the archive where the copy goes.
    if (target.isSame(from))
        return;
    for (const auto name : fileNames)
        copyRegularFile({from, name}, {target, name}, kLargestReportBytes);
    target.syncVolume();
}

int folderCount(std::span<const ManifestFile> files) {
    std::unordered_set<std::string> folders;
    for (const auto& file : files) {
        std::string folder;
        const auto parts = Text::pieces(file.relativePath, '/');
        for (std::size_t part = 0; part + 1 < parts.size(); ++part) {
            if (part > 0)
                folder += '/';
            folder += parts[part];
            folders.insert(folder);
        }
    }
    return static_cast<int>(folders.size());
}

} // namespace slatewise::ReportWriter
