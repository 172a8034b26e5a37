#include "Reports/Sessions.h"

#include "Platform/AppInfo.h"
#include "Reports/ReportWriter.h"

#include <chrono>
#include <utility>

namespace slatewise::test {

const std::string kVersion = "Slatewise DIT v" + std::string(AppInfo::version);

ManifestFile copiedFile(const std::string& path) {
    ManifestFile result;
    result.relativePath = path;
    result.sizeBytes = 1'234'567;
    result.action = RowAction::Copy;
    result.verifyStatus = VerifyStatus::Verified;
    result.sourceSHA256 = std::string(64, 'a');
    return result;
}

ManifestFile copiedClip(const std::string& path, double captureFps, double timecodeRate) {
    auto result = copiedFile(path);
    result.mtime = Clock::fromIso8601("2026-03-01T09:30:15Z");
    auto& media = result.media.edit();
    media.timecodeStart = "01:00:00:00";
    media.timecodeEnd = "01:00:10:00";
    media.durationTC = "00:00:10:00";
    media.captureFps = captureFps;
    media.timecodeRate = timecodeRate;
    media.timecodeDropFrame = false;
    auto& essence = media.essence.emplace();
    essence.codec = "ProRes";
    essence.width = 1920;
    essence.height = 1080;
    essence.cameraModel = "ALEXA";
    return result;
}

SessionManifest sessionOf(std::vector<ManifestFile> files) {
    SessionManifest manifest;
    manifest.sessionID = "12345678-9abc-def0-1234-56789abcdef0";
    manifest.startedAt = *Clock::fromIso8601("2026-03-01T09:30:15Z");
    manifest.finishedAt = manifest.startedAt + std::chrono::milliseconds(49'500);
    manifest.card.name = "A<001>";
    manifest.card.camera = "CamA";
    manifest.card.ekip = "Ünal";
    manifest.card.mountPoint = "/media/A001";
    manifest.destination.sessionRoot = "/media/SSD/A001";
    manifest.files = std::move(files);
    manifest.counts.folders = ReportWriter::folderCount(manifest.files);
    manifest.counts.filesCopied = static_cast<int>(manifest.files.size());
    manifest.counts.bytesCopied = 1'234'567;
    return manifest;
}

} // namespace slatewise::test
