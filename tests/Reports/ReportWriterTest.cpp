#include "Reports/ReportWriter.h"

#include "Platform/AppInfo.h"
#include "Platform/Error.h"
#include "Platform/Json.h"
#include "Platform/Text.h"
#include "support/Files.h"
#include "support/Process.h"

#include <gmock/gmock.h>

#include <functional>
#include <sys/stat.h>

#include <cstdlib>

using namespace slatewise;
using namespace slatewise::test;
using ::testing::HasSubstr;

namespace {

const std::string kHash(64, 'a');

FileCopyResult row(const std::string& path, RowAction action, VerifyStatus status) {
    FileCopyResult result;
    result.relativePath = path;
    result.sizeBytes = 1'234'567;
    result.action = action;
    result.verifyStatus = status;
    return result;
}

/// A session with one file of each fate.
SessionManifest session() {
    OffloadOutcome outcome;
    outcome.sessionRoot = "/media/SSD/A001";
    outcome.status = OutcomeStatus::Failed;
    outcome.problems = {{OffloadProblem::Kind::CopyDiffers, "d.mov"}};
    outcome.bytesCopied = 2'469'134;
    outcome.startedAt = *Clock::fromIso8601("2026-03-01T09:30:15Z");
    outcome.finishedAt = outcome.startedAt + std::chrono::seconds(60);

    auto proved = row("DCIM/a, \"b\".mov", RowAction::Copy, VerifyStatus::Verified);
    proved.mtime = outcome.startedAt;
    proved.sourceSHA256 = proved.destSHA256 = kHash;
    proved.media.edit().timecodeStart = "01:00:00:00";
    proved.media.edit().durationSeconds = 24;
    proved.media.edit().captureFps = 23.976;
    proved.media.edit().timecodeDropFrame = false;
    proved.media.edit().essence.emplace().width = 3840;
    proved.media.edit().essence->shutterDegrees = 180;
    auto unproved = row("DCIM/sub/c.mov", RowAction::Copy, VerifyStatus::CopiedUnverified);
    unproved.sourceSHA256 = kHash;
    outcome.files = {proved, unproved, row("d.mov", RowAction::Fail, VerifyStatus::Failed),
                     row(".DS_Store", RowAction::Skip, VerifyStatus::Skipped)};

    VolumeFacts card;
    card.mountPoint = "/media/A001";
    card.volumeName = "A001";
    card.volumeUUID = "1234-ABCD";
    card.totalBytes = 64'000'000'000;
    VolumeFacts disk;
    disk.mountPoint = "/media/SSD";
    disk.volumeName = "SSD";
    return ReportWriter::buildManifest(outcome, outcome.files, card, disk, " A/B \n", " Ünal ",
                                       AppLanguage::English);
}

std::string inventoryText(const SessionManifest& manifest, AppLanguage language) {
    std::string text;
    ReportWriter::inventoryCSV(manifest, language, [&](auto piece) { text += piece; });
    return text;
}

std::string checksumText(const SessionManifest& manifest) {
    std::string text;
    ReportWriter::checksumList(manifest, [&](auto piece) { text += piece; });
    return text;
}

} // namespace

TEST(Manifest, IsExactlyThisText) {
    const auto text = ReportWriter::isoEncode(session());
    const auto expected = Json::Value::parse(R"({"app": "slw-dit", "app_version": ")" +
                                             std::string(AppInfo::version) + R"(",
        "card": {"camera": "A-B", "device_identifier": "", "ekip": "Ünal", "file_system": "",
            "mount_point": "/media/A001", "name": "A001", "protocol": "",
            "total_bytes": 64000000000, "volume_uuid": "1234-ABCD"},
        "counts": {"bytes_copied": 2469134, "files_copied": 1, "files_failed": 1,
            "files_skipped_system": 1, "folders": 2},
        "destination": {"mount_point": "/media/SSD", "name": "SSD",
            "session_root": "/media/SSD/A001"},
        "files": [{"action": "COPY", "capture_fps": 23.976, "dest_sha256": ")" +
                                             kHash + R"(",
                "duration_seconds": 24.0, "essence": {"shutterDegrees": 180.0, "width": 3840},
                "mtime": "2026-03-01T09:30:15Z", "relative_path": "DCIM/a, \"b\".mov",
                "size_bytes": 1234567, "source_sha256": ")" +
                                             kHash + R"(",
                "timecode_drop_frame": false, "timecode_start": "01:00:00:00",
                "verify_status": "verified"},
            {"action": "COPY", "relative_path": "DCIM/sub/c.mov", "size_bytes": 1234567,
                "source_sha256": ")" + kHash +
                                             R"(", "verify_status": "copied_unverified"},
            {"action": "FAIL", "relative_path": "d.mov", "size_bytes": 1234567,
                "verify_status": "failed"},
            {"action": "SKIP", "relative_path": ".DS_Store", "size_bytes": 1234567,
                "verify_status": "skipped"}],
        "finished_at": "2026-03-01T09:31:15Z", "hash_algorithm": "sha256",
        "problems": ["The copy of d.mov differs from the card."], "schema_version": 2,
        "session_id": "00000000-0000-0000-0000-000000000000",
        "started_at": "2026-03-01T09:30:15Z", "status": "failed"})");
    // Laid out by blanks, sorted by key, and with slashes as older versions wrote them.
    EXPECT_EQ(text, Text::replaced(expected.dump(2), "/", "\\/"));
}

TEST(Manifest, ReadsWhatItWroteAndWhatOlderVersionsWrote) {
    auto hashing = session();
    hashing.isHashOnly = true;
    for (const auto& manifest : {session(), hashing})
        EXPECT_EQ(ReportWriter::isoDecode(ReportWriter::isoEncode(manifest)), manifest);

    auto old = Json::Value::parse(ReportWriter::isoEncode(session()));
    old["schema_version"] = 1;
    old["card"] = {{"name", "A001"}, {"camera", " X/Y "}};
    old["counts"].erase("folders");
    old["files"][1] = {{"relative_path", "x"},
                       {"size_bytes", 1},
                       {"action", "COPY"},
                       {"verify_status", "verified"},
                       {"mtime", nullptr}};
    const auto manifest = ReportWriter::isoDecode(old.dump());
    EXPECT_EQ(manifest.schemaVersion, 1);
    EXPECT_EQ(manifest.card.camera, "X-Y");
    EXPECT_EQ(manifest.card.mountPoint, "");
    EXPECT_EQ(manifest.card.totalBytes, 0);
    EXPECT_EQ(manifest.counts.folders, 0);
    EXPECT_FALSE(manifest.files[1].mtime);
}

TEST(Manifest, RefusesWhatIsNone) {
    const auto whole = Json::Value::parse(ReportWriter::isoEncode(session()));
    for (const auto& [key, value] : whole.items()) {
        auto without = whole;
        without.erase(key);
        // Most sessions have none.
        if (key == "problems")
            EXPECT_THAT(ReportWriter::isoDecode(without.dump()).problems, testing::IsEmpty());
        else
            EXPECT_THROW(ReportWriter::isoDecode(without.dump()), Error) << key;
    }
    for (const auto* key : {"relative_path", "size_bytes", "action", "verify_status"}) {
        auto without = whole;
        without["files"][0].erase(key);
        EXPECT_THROW(ReportWriter::isoDecode(without.dump()), Error) << key;
    }
    using Pointer = Json::Value::json_pointer;
    const std::vector<std::pair<const char*, Json::Value>> wrongValues = {
        {"/started_at", "yesterday"},
        {"/status", nullptr},
        {"/status", "good"},
        {"/files/0/action", nullptr},
        {"/files/0/verify_status", "VERIFIED"},
        {"/files/0/size_bytes", true},
        {"/files/0/size_bytes", 1.5},
        {"/files/0/size_bytes", 1e300},
        {"/files/0/capture_fps", true},
        {"/card/total_bytes", std::numeric_limits<std::uint64_t>::max()},
        {"/counts/files_copied", 5'000'000'000},
    };
    for (const auto& [place, value] : wrongValues) {
        auto wrong = whole;
        wrong[Pointer(place)] = value;
        EXPECT_THROW(ReportWriter::isoDecode(wrong.dump()), Error) << place << " " << value;
    }
    auto wholeAsDouble = whole;
    wholeAsDouble["files"][0]["size_bytes"] = 1'234'567.0;
    EXPECT_EQ(ReportWriter::isoDecode(wholeAsDouble.dump()), session());
    for (const auto* text : {"", "{", "[]", "null", "\"text\"", "{\"files\": 3}", "\xff\xfe"})
        EXPECT_THROW(ReportWriter::isoDecode(text), Error) << text;
}

TEST(InventoryCSV, QuotesWhatNeedsItAndSpeaksBothLanguages) {
    const std::string header =
        "path,size,size_human,mtime,sha256,action,verify_status,timecode_start,timecode_end,"
        "duration_tc,duration_seconds,capture_fps,timecode_rate,timecode_drop_frame\n";
    auto manifest = session();
    manifest.files[2].relativePath = "new\nline\rcr";
    EXPECT_EQ(inventoryText(manifest, AppLanguage::English),
              header + "\"DCIM/a, \"\"b\"\".mov\",1234567,\"1.2 MB (1,234,567 bytes)\"," +
                  "2026-03-01T09:30:15Z," + kHash +
                  ",COPY,verified,01:00:00:00,,,24.0,23.976,,false\n" +
                  "DCIM/sub/c.mov,1234567,\"1.2 MB (1,234,567 bytes)\",," + kHash +
                  ",COPY,copied_unverified,,,,,,,\n" +
                  "\"new\nline\rcr\",1234567,\"1.2 MB (1,234,567 bytes)\",,,FAIL,failed,,,,,,,\n" +
                  ".DS_Store,1234567,\"1.2 MB (1,234,567 bytes)\",,,SKIP,skipped,,,,,,,\n");
    EXPECT_THAT(inventoryText(manifest, AppLanguage::Turkish),
                HasSubstr("1,2 MB (1.234.567 bayt)"));
    manifest.files.clear();
    EXPECT_EQ(inventoryText(manifest, AppLanguage::English), header);
}

TEST(ChecksumList, IsAcceptedByTheToolThatPeopleUse) {
    const TemporaryFolder folder;
    SessionManifest manifest;
    for (const auto* name :
         {" leading", "*star", "back\\slash", "new\nline", "both\\\n", "bad\xff", "return\r",
          "re\rturn", "line\nreturn\r", "trailing ", "DCIM/Çekim 1, \"x\".mov"}) {
        writeFile(folder / name, name);
        auto& file =
            manifest.files.emplace_back(row(name, RowAction::Copy, VerifyStatus::Verified));
        file.sourceSHA256 = independentSha256(folder / name);
    }
    auto& unproved = manifest.files.emplace_back(
        row("missing", RowAction::Copy, VerifyStatus::CopiedUnverified));
    unproved.sourceSHA256 = kHash;
    writeFile(folder / "list", checksumText(manifest));

    const auto result = run({"sh", "-c", "cd \"$0\" && sha256sum --strict -c list", folder.path()});
    EXPECT_EQ(result.exitCode, 0) << result.standardOutput << result.standardError;
    EXPECT_EQ(std::count(result.standardOutput.begin(), result.standardOutput.end(), '\n'), 11);
    EXPECT_EQ(checksumText(SessionManifest()), "");
}

TEST(ReportWriter, CountsAndListsWhatWasHashedAlone) {
    OffloadOutcome outcome;
    outcome.status = OutcomeStatus::Hashed;
    outcome.files = {row("a.mov", RowAction::Hash, VerifyStatus::Hashed),
                     row(".DS_Store", RowAction::Skip, VerifyStatus::Skipped)};
    outcome.files.front().sourceSHA256 = kHash;
    outcome.files.back().sizeBytes = 1;
    const auto manifest =
        ReportWriter::buildManifest(outcome, outcome.files, {}, {}, "", "", AppLanguage::English);
    EXPECT_EQ(manifest.counts.filesHashed, 1);
    EXPECT_EQ(manifest.bytesHandled(), 1'234'567);
    EXPECT_EQ(checksumText(manifest), kHash + "  a.mov\n");
    EXPECT_EQ(ReportWriter::isoDecode(ReportWriter::isoEncode(manifest)), manifest);
}

TEST(ReportWriter, WritesASetThatOthersCanRead) {
    const TemporaryFolder folder;
    const auto write = [&](const char* name) {
        std::filesystem::create_directories(folder / name);
        const RootFolder set(folder / name);
        ReportWriter::writeLists(session(), set, AppLanguage::English);
        ReportWriter::writePages(session(), set, AppLanguage::English);
    };
    // What others planted is neither waited for nor followed.
    writeFile(folder / "outside", "private");
    std::filesystem::create_directory(folder / "set");
    std::filesystem::create_symlink(folder / "outside", folder / "set/checksums.sha256");
    for (const auto* name : {"inventory.csv", "Reports_Standart.pdf"})
        ASSERT_EQ(::mkfifo((folder / "set" / name).c_str(), 0600), 0);
    write("set");
    EXPECT_EQ(readFile(folder / "outside"), "private");
    EXPECT_EQ(run({"python3", "-m", "json.tool", folder / "set/manifest.json"}).exitCode, 0);
    for (const auto& entry : std::filesystem::directory_iterator(folder / "set"))
        EXPECT_NE(entry.path().extension(), ".tmp");
    EXPECT_EQ(readFile(folder / "set/checksums.sha256"), kHash + "  DCIM/a, \"b\".mov\n");

    writeFile(folder / "blocked/inventory.csv/x", "a folder in the file's place");
    EXPECT_THROW(write("blocked"), Error);
    EXPECT_EQ(readFile(folder / "blocked/manifest.json"), ReportWriter::isoEncode(session()))
        << "the manifest comes first and stays";
    writeFile(folder / "pages/Reports_Standart.html/x", "a folder in the file's place");
    EXPECT_THROW(write("pages"), Error);
    for (const auto* name : {"manifest.json", "checksums.sha256", "Reports_Detailed.pdf"})
        EXPECT_TRUE(std::filesystem::is_regular_file(folder / "pages" / name)) << name;
}

TEST(ReportWriter, CopiesThoseFilesOfASetThatAreThere) {
    const TemporaryFolder folder;
    writeFile(folder / "from/manifest.json", "new");
    writeFile(folder / "from/Reports_Detailed.pdf", "pdf");
    writeFile(folder / "from/private.txt", "no part of a set");
    writeFile(folder / "to/manifest.json", "old and longer");
    const RootFolder to(folder / "to");
    const RootFolder from(folder / "from");
    EXPECT_EQ(ReportWriter::copySidecars(from, to), 2);
    EXPECT_EQ(readFile(folder / "to/manifest.json"), "new");
    EXPECT_EQ(readFile(folder / "to/Reports_Detailed.pdf"), "pdf");
    EXPECT_FALSE(std::filesystem::exists(folder / "to/private.txt"));

    EXPECT_EQ(ReportWriter::copySidecars(from, from), 0) << "a set is no copy of itself";
    EXPECT_EQ(readFile(folder / "from/manifest.json"), "new");

    // Nor does a link lead a copy anywhere.
    writeFile(folder / "outside", "private");
    std::filesystem::remove(folder / "to/manifest.json");
    std::filesystem::create_symlink(folder / "outside", folder / "to/manifest.json");
    ReportWriter::copySidecars(from, to);
    EXPECT_EQ(readFile(folder / "outside"), "private");
    EXPECT_TRUE(std::filesystem::is_regular_file(
        std::filesystem::symlink_status(folder / "to/manifest.json")));

    // What others planted in a set is neither waited for nor followed, and costs no good file.
    writeFile(folder / "to/inventory.csv", "good");
    writeFile(folder / "from/checksums.sha256", "x");
    const auto planted = folder / "from/inventory.csv";
    const std::function<void()> plants[] = {
        [&] { std::filesystem::create_directory(planted); },
        [&] { ASSERT_EQ(::mkfifo(planted.c_str(), 0600), 0); },
        [&] { std::filesystem::create_symlink("private.txt", planted); },
    };
    for (const auto& plant : plants) {
        plant();
        EXPECT_THROW(ReportWriter::copySidecars(from, to), Error);
        EXPECT_EQ(readFile(folder / "to/inventory.csv"), "good");
        EXPECT_FALSE(std::filesystem::exists(folder / "to/checksums.sha256"))
            << "the first failure ends it";
        std::filesystem::remove(planted);
    }
}

TEST(ReportWriter, CountsFoldersThatPathsImply) {
    const auto count = [](std::initializer_list<const char*> paths) {
        std::vector<ManifestFile> files;
        for (const auto* path : paths)
            files.emplace_back(row(path, RowAction::Skip, VerifyStatus::Skipped));
        return ReportWriter::folderCount(files);
    };
    EXPECT_EQ(count({}), 0);
    EXPECT_EQ(count({"root.mov"}), 0);
    EXPECT_EQ(count({"a/b/c.mov", "a//b/d.mov", "/a/e.mov", "b/a/f.mov", "ab/x"}), 5);
}
