#include "Benches.h"
#include "Scratch.h"

#include "Platform/Files/FileSystem.h"
#include "Reports/ReportWriter.h"
#include "Reports/SessionDetailedHTML.h"
#include "Reports/SessionDetailedPDF.h"
#include "Reports/SessionHTML.h"
#include "Reports/SessionPDF.h"

#include <fmt/format.h>

#include <functional>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace slatewise::bench {

namespace {

constexpr int kFilesPerFolder = 50;
constexpr auto kLanguage = AppLanguage::English;

void addClip(OffloadOutcome& outcome, int number) {
    auto& row = outcome.files.emplace_back();
    row.relativePath = fmt::format("A001C002_260301_R1AB/REEL_{:04}/A001C{:06}_260301_R1AB.mov",
                                   number / kFilesPerFolder, number);
    row.sizeBytes = 8'123'456'789 + number;
    row.mtime = row.created = outcome.startedAt + std::chrono::seconds(number);
    row.action = RowAction::Copy;
    row.verifyStatus = VerifyStatus::Verified;
    row.sourceSHA256 = row.destSHA256 = fmt::format("{:064x}", number);
    row.media.edit().timecodeStart = "01:00:00:00";
    row.media.edit().timecodeEnd = "01:03:21:14";
    row.media.edit().durationTC = "00:03:21:14";
    row.media.edit().durationSeconds = 201.58;
    row.media.edit().captureFps = row.media.edit().timecodeRate = 23.976;
    row.media.edit().timecodeDropFrame = false;
    auto& essence = row.media.edit().essence.emplace();
    essence.cameraModel = "ALEXA 35";
    essence.recordedDate = "UTC 20260301 093015";
    essence.codec = "ProRes";
    essence.codecProfile = "4444 XQ";
    essence.width = 3840;
    essence.height = 2160;
    essence.gamma = "LogC4";
    essence.lens = "40 mm";
    essence.sensorFps = essence.projectFps = 23.976;
    essence.exposureIndex = number % 2 == 0 ? 800 : 1280;
}

SessionManifest manifestOf(int files) {
    OffloadOutcome outcome;
    outcome.sessionID = Uuid::random();
    outcome.sessionRoot = "/media/disk/session";
    outcome.status = OutcomeStatus::Verified;
    outcome.startedAt = outcome.finishedAt = Clock::now();
    for (int number = 0; number < files; ++number)
        addClip(outcome, number);
    VolumeFacts card;
    card.volumeName = "A001C002_260301_R1AB";
    card.mountPoint = "/media/A001";
    auto rows = std::move(outcome.files);
    return ReportWriter::buildManifest(outcome, std::move(rows), card, {}, "CamA", "Unit1",
                                       AppLanguage::English);
}

struct Cost {
    double cpuSeconds = 0;
    double peakMegabytes = 0;
};

/// What some work on a manifest costs. It runs in a process of its own, whose peak memory is the
/// work's and the manifest's alone.
Cost costOf(int files, const std::function<void(const SessionManifest&)>& work) {
    int ends[2];
    if (::pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    const pid_t child = ::fork();
    if (child == 0) {
        const auto manifest = manifestOf(files);
        const double seconds = cpuSeconds([&] { work(manifest); });
        const bool isTold = ::write(ends[1], &seconds, sizeof seconds) == sizeof seconds;
        ::_exit(isTold ? 0 : 1);
    }
    Cost cost;
    const bool isTold =
        ::read(ends[0], &cost.cpuSeconds, sizeof cost.cpuSeconds) == sizeof cost.cpuSeconds;
    ::close(ends[0]);
    ::close(ends[1]);
    int status = 0;
    rusage usage{};
    if (::wait4(child, &status, 0, &usage) != child || status != 0 || !isTold)
        throw std::runtime_error("measuring the reports failed");
    cost.peakMegabytes = static_cast<double>(usage.ru_maxrss) / 1000;
    return cost;
}

} // namespace

void benchReports(const std::filesystem::path& folder) {
    using Work = std::function<void(const SessionManifest&)>;
    std::filesystem::create_directory(folder / "set");
    const RootFolder root(folder / "set");
    const std::vector<std::pair<std::string, Work>> parts = {
        {"(the manifest in memory)",
         [](const auto&) {
         }},
        {"manifest.json",
         [&](const auto& manifest) {
             root.writeAtomically("file",
                                  [&](const auto& put) { ReportWriter::isoEncode(manifest, put); });
         }},
        {"inventory.csv",
         [&](const auto& manifest) {
             root.write("file", [&](const auto& put) {
                 ReportWriter::inventoryCSV(manifest, kLanguage, put);
             });
         }},
        {"checksums.sha256",
         [&](const auto& manifest) {
             root.write("file",
                        [&](const auto& put) { ReportWriter::checksumList(manifest, put); });
         }},
        {"Reports_Standart.html",
         [&](const auto& manifest) {
             SessionHTML::write(manifest, ReportTree::build(manifest.files), {root, "file"},
                                kLanguage);
         }},
        {"Reports_Detailed.html",
         [&](const auto& manifest) {
             SessionDetailedHTML::write(manifest, ReportTree::build(manifest.files), {root, "file"},
                                        kLanguage);
         }},
        {"Reports_Standart.pdf",
         [&](const auto& manifest) {
             SessionPDF::write(manifest, ReportTree::build(manifest.files), {root, "file"},
                               kLanguage);
         }},
        {"Reports_Detailed.pdf",
         [&](const auto& manifest) {
             SessionDetailedPDF::write(manifest, ReportTree::build(manifest.files), {root, "file"},
                                       kLanguage);
         }},
        {"the whole set",
         [&](const auto& manifest) {
             ReportWriter::writeLists(manifest, root, kLanguage);
             ReportWriter::writePages(manifest, root, kLanguage);
         }},
    };
    fmt::print("Writing reports: seconds of CPU, peak memory in MB, {} files to a folder\n"
               "  {:<26}{:>20}{:>20}{:>10}\n",
               kFilesPerFolder, "", "10,000 files", "100,000 files", "growth");
    for (const auto& [name, work] : parts) {
        const auto few = costOf(10'000, work);
        const auto many = costOf(100'000, work);
        record("reports of 100,000 files", name, "cpu_seconds", many.cpuSeconds);
        record("reports of 100,000 files", name, "megabytes", many.peakMegabytes);
        fmt::print("  {:<26}{:>10.3f} s{:>5.0f} MB{:>10.3f} s{:>5.0f} MB{:>9.1f}x\n", name,
                   few.cpuSeconds, few.peakMegabytes, many.cpuSeconds, many.peakMegabytes,
                   many.cpuSeconds / few.cpuSeconds);
    }
    std::filesystem::remove_all(folder / "set");
    fmt::print("\n");
}

} // namespace slatewise::bench
