#include "Reports/ReportWriter.h"

#include "Language/L10n.h"
#include "Offload/ReportNames.h"
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
#include <exception>
#include <functional>
#include <future>
#include <iterator>
#include <span>
#include <unordered_set>
#include <utility>

namespace slatewise::ReportWriter {

namespace {

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

void removeIfPossible(const RootFolder& folder, std::string_view name) noexcept {
    try {
        folder.removeFile(name);
    } catch (const std::exception&) {
        // Why it was not written says more.
    }
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
    manifest.isHashOnly = outcome.isHashOnly;
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

void writeLists(const SessionManifest& manifest, const RootFolder& folder, AppLanguage language) {
    using FileSystem::TextSink;
    folder.writeAtomically(ReportNames::manifest,
                           [&](const TextSink& put) { isoEncode(manifest, put); });
    folder.write(ReportNames::inventory,
                 [&](const TextSink& put) { inventoryCSV(manifest, language, put); });
    folder.write(ReportNames::checksums, [&](const TextSink& put) { checksumList(manifest, put); });
    folder.sync();
}

void writePages(const SessionManifest& manifest, const RootFolder& folder, AppLanguage language) {
    constexpr struct {
        std::string_view name;
        decltype(&SessionHTML::write) write;
    } kPages[] = {
        {ReportNames::standardPage, SessionHTML::write},
        {ReportNames::standardPDF, SessionPDF::write},
        {ReportNames::detailedPage, SessionDetailedHTML::write},
        {ReportNames::detailedPDF, SessionDetailedPDF::write},
    };
    const auto tree = ReportTree::build(manifest.files);
    // Each of them waits for those begun when it goes.
    std::vector<std::future<void>> writing;
    for (const auto& [name, write] : kPages)
        writing.push_back(std::async(std::launch::async, write, std::cref(manifest),
                                     std::span(tree), FileBeneath{folder, name}, language));
    std::exception_ptr failure;
    for (std::size_t page = 0; page < std::size(kPages); ++page) {
        try {
            writing[page].get();
        } catch (...) {
            if (!failure)
                failure = std::current_exception();
            removeIfPossible(folder, kPages[page].name);
        }
    }
    folder.sync();
    if (failure)
        std::rethrow_exception(failure);
}

int copySidecars(const RootFolder& from, const RootFolder& to, std::int64_t largestBytes) {
    // A user may have put the archive where the copy goes.
    if (to.isSame(from))
        return 0;
    int copied = 0;
    for (const auto name : fileNames)
        copied += copyRegularFile({from, name}, {to, name}, largestBytes) ? 1 : 0;
    to.syncVolume();
    return copied;
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
