#pragma once

#include "Reports/Pdf.h"
#include "Reports/SessionDetailedPDF.h"
#include "Reports/SessionPDF.h"
#include "Reports/Sessions.h"
#include "support/Files.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace slatewise::test {

/// Of digits as wide as digits get.
inline const std::string kWideHash(64, '8');

/// One of the two reports, for what holds of both.
struct Report {
    const char* name;
    void (*writeTree)(const SessionManifest&, std::span<const ReportNode>, const FileBeneath&,
                      AppLanguage);
    /// The edges of the table's columns, left to right.
    std::vector<double> edges;
    std::size_t rateColumn;

    void write(const SessionManifest& manifest, const std::filesystem::path& file,
               AppLanguage language) const {
        const RootFolder folder(file.parent_path());
        writeTree(manifest, ReportTree::build(manifest.files), {folder, file.filename()}, language);
    }
};

inline const Report kStandard = {.name = "standard",
                                 .writeTree = SessionPDF::write,
                                 .edges = {8, 132, 218, 254, 296, 404, 464, 508, 532, 834},
                                 .rateColumn = 6};
inline const Report kDetailed = {.name = "detailed",
                                 .writeTree = SessionDetailedPDF::write,
                                 .edges = {7, 135, 207, 325, 457, 509, 835},
                                 .rateColumn = 3};

inline void PrintTo(const Report& report, std::ostream* stream) {
    *stream << report.name;
}

class PdfReports : public ::testing::Test {
protected:
    PdfReports() {
        manifest.status = OutcomeStatus::Verified;
        manifest.sessionID = "0f8fad5b-d9cb-469f-a165-70867728950e";
        manifest.startedAt = manifest.finishedAt = *Clock::fromIso8601("2026-03-01T09:30:15Z");
        manifest.card.name = "A001";
        manifest.card.mountPoint = "/media/A001";
        manifest.destination.sessionRoot = "/media/SSD/2026-03-01/A001";
    }

    ManifestFile& add(const std::string& path) {
        auto& file = manifest.files.emplace_back(copiedFile(path));
        file.mtime = manifest.startedAt;
        file.sourceSHA256 = kWideHash;
        return file;
    }

    void addClips(int count) {
        for (int index = 0; index < count; ++index)
            add(fmt::format("clip{:03}.mov", index));
    }

    std::filesystem::path write(const Report& report, AppLanguage language = kEnglish) const {
        const auto file = folder / (std::string(report.name) + ".pdf");
        report.write(manifest, file, language);
        return file;
    }

    /// How many rows each page has.
    static std::vector<int> rowsByPage(const std::filesystem::path& file) {
        std::vector<int> rows(pdfPageSizes(file).size());
        for (const auto& word : pdfWords(file))
            rows[static_cast<std::size_t>(word.page) - 1] += word.text == "COPY" ? 1 : 0;
        return rows;
    }

    TemporaryFolder folder;
    SessionManifest manifest;
};

} // namespace slatewise::test
