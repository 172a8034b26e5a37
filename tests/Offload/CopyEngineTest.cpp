#include "Offload/CopyEngineTest.h"

#include "Language/L10n.h"
#include "Offload/OffloadError.h"
#include "Offload/SHA256Hasher.h"
#include "Platform/Error.h"
#include "support/Files.h"
#include "support/Offloads.h"
#include "support/Process.h"

#include <gmock/gmock.h>

#include <climits>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;
using namespace std::string_literals;

namespace {

constexpr std::int64_t kMiB = 1'048'576;

template <typename P>
std::vector<P> only(const std::vector<OffloadPhase>& phases) {
    std::vector<P> result;
    for (const auto& phase : phases) {
        if (const auto* match = std::get_if<P>(&phase))
            result.push_back(*match);
    }
    return result;
}

} // namespace

TEST_F(CopyEngineTest, CopiesProvesAndSkips) {
    writeFile(card / "DCIM/A001.mov", bytesOf(2 * kMiB + 17));
    writeFile(card / "DCIM/._A001.mov", "companion");
    writeFile(card / "empty", "");
    writeFile(card / ".Trashes/old.mov", "gone");
    writeFile(card / "new\nline \xff", "x");
    std::filesystem::create_directory(card / "bare folder");

    const auto outcome = run();

    EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
    EXPECT_EQ(outcome.bytesCopied, 2 * kMiB + 18);
    EXPECT_EQ(outcome.sessionRoot, destination / "session");
    EXPECT_EQ(outcome.startedAt, request.now);
    EXPECT_GE(outcome.finishedAt, outcome.startedAt);
    EXPECT_EQ(outcome.sessionID, request.sessionID);
    EXPECT_EQ(verdicts(outcome), (Verdicts{{"DCIM/A001.mov", "COPY/verified"},
                                           {"DCIM/._A001.mov", "SKIP/skipped"},
                                           {"empty", "COPY/verified"},
                                           {"new\nline \xff", "COPY/verified"}}));
    for (const auto& row : outcome.files) {
        if (row.action != RowAction::Copy)
            continue;
        EXPECT_EQ(row.sourceSHA256, independentSha256(outcome.sessionRoot / row.relativePath));
        EXPECT_EQ(row.destSHA256, row.sourceSHA256);
        EXPECT_TRUE(row.mtime);
    }
    EXPECT_FALSE(std::filesystem::exists(destination / "session/bare folder"));
    EXPECT_THAT(record.problems, IsEmpty());
}

TEST_F(CopyEngineTest, PublishesScanningCopyingVerifyingInThatOrder) {
    writeFile(card / "a", bytesOf(3 * kMiB));
    writeFile(card / "b", "1");
    run();

    ASSERT_TRUE(std::holds_alternative<Phase::Scanning>(record.phases.front()));
    std::size_t kind = 0;
    double fraction = 0;
    for (const auto& phase : record.phases) {
        EXPECT_GE(phase.index(), kind);
        kind = phase.index();
        const auto* copying = std::get_if<Phase::Copying>(&phase);
        const auto* verifying = std::get_if<Phase::Verifying>(&phase);
        const double now = copying ? copying->fraction : verifying ? verifying->fraction : 0;
        EXPECT_GE(now, fraction);
        fraction = now;
    }
    EXPECT_DOUBLE_EQ(fraction, 1.0);
    // Once before each file, once after each chunk.
    EXPECT_THAT(only<Phase::Copying>(record.phases), SizeIs(2 + 3 + 1));
    EXPECT_THAT(only<Phase::Verifying>(record.phases), SizeIs(2 + 3 + 1));
    EXPECT_GT(only<Phase::Copying>(record.phases).back().bytesPerSecond, 0);
}

TEST_F(CopyEngineTest, HashingOnlyTouchesNoDestination) {
    writeFile(card / "a", bytesOf(5000));
    writeFile(card / ".DS_Store", "1");
    request.settings.verifyOnly = true;
    const auto outcome = run();

    EXPECT_EQ(outcome.status, OutcomeStatus::Hashed);
    EXPECT_EQ(outcome.bytesCopied, 0);
    EXPECT_EQ(verdicts(outcome), (Verdicts{{"a", "HASH/hashed"}, {".DS_Store", "SKIP/skipped"}}));
    EXPECT_TRUE(std::filesystem::is_empty(destination.path()));
    EXPECT_EQ(outcome.files[1].sourceSHA256, independentSha256(card / "a"));
    EXPECT_FALSE(outcome.files[1].destSHA256);
    EXPECT_EQ(record.phases.size(), only<Phase::Scanning>(record.phases).size());
    EXPECT_EQ(figuresOf(record.phases.back())->fraction, 1);
}

TEST_F(CopyEngineTest, AFailingFileStopsTheRunAndEveryFileHasARow) {
    for (const auto* name : {"1", "2", "4", ".DS_Store", "5"})
        writeFile(card / name, name);
    ASSERT_EQ(::mkfifo((card / "3").c_str(), 0600), 0);
    const auto outcome = run();

    EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
    EXPECT_EQ(outcome.bytesCopied, 2);
    EXPECT_EQ(verdicts(outcome), (Verdicts{{"1", "COPY/copied_unverified"},
                                           {"2", "COPY/copied_unverified"},
                                           {"3", "FAIL/failed"},
                                           {"4", "FAIL/failed"},
                                           {".DS_Store", "SKIP/skipped"},
                                           {"5", "FAIL/failed"}}));
    EXPECT_THAT(outcome.files, SizeIs(6));
    EXPECT_THAT(record.problems, ElementsAre(HasSubstr("a device, not a file")));
    EXPECT_EQ(readFile(destination / "session/2"), "2") << "what was copied stays";
}

TEST_F(CopyEngineTest, LinksAreOffloadedHonestly) {
    const TemporaryFolder elsewhere;
    writeFile(elsewhere / "key", "private");
    writeFile(card / "DCIM/film.mov", "the bytes");
    std::filesystem::create_symlink("DCIM/film.mov", card / "film.mov");
    std::filesystem::create_symlink(elsewhere / "key", card / "readme.txt");
    std::filesystem::create_symlink("nowhere", card / "dangling");
    std::filesystem::create_symlink("DCIM", card / "folder");
    std::filesystem::create_symlink("DCIM/film.mov/x", card / "through");
    std::filesystem::create_symlink(std::string(256, 'x'), card / "too long");
    const auto outcome = run();

    EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
    EXPECT_EQ(verdicts(outcome), (Verdicts{{"DCIM/film.mov", "COPY/verified"},
                                           {"film.mov", "COPY/verified"},
                                           {"readme.txt", "SKIP/skipped"},
                                           {"dangling", "SKIP/skipped"},
                                           {"folder", "SKIP/skipped"},
                                           {"through", "SKIP/skipped"},
                                           {"too long", "SKIP/skipped"}}));
    EXPECT_FALSE(std::filesystem::is_symlink(destination / "session/film.mov"));
    EXPECT_EQ(readFile(destination / "session/film.mov"), "the bytes");
    EXPECT_FALSE(std::filesystem::exists(destination / "session/readme.txt"));
    EXPECT_THAT(
        record.problems,
        UnorderedElementsAre("The link dangling leads nowhere and was left out.",
                             "The link through leads nowhere and was left out.",
                             "The link too long leads nowhere and was left out.",
                             "The link folder leads to no file and was left out.",
                             "The link readme.txt does not stay on the card and was left out."));
}

TEST_F(CopyEngineTest, NoLinkOnTheDestinationAndNoTemplateLeadsOut) {
    const TemporaryFolder outside;
    writeFile(card / "DCIM/1", "1");
    writeFile(card / "DCIM/2", "2");
    request.settings.folderTemplate = "{Dest}/{YYYY-MM-DD}/{CardName}";
    const auto date = Clock::localText(request.now, "yyyy-MM-dd");
    std::filesystem::create_symlink(outside.path(), destination / date);
    try {
        EXPECT_EQ(run().status, OutcomeStatus::Failed);
    } catch (const Error&) {
        // It has failed before its first row.
    }
    std::filesystem::remove(destination / date);

    const TemporaryFolder beside;
    for (const std::string& pathTemplate : {"{Dest}"s, "{Dest}/../x"s, "{Dest}{CardName}"s,
                                            outside.path().native() + "/{CardName}"}) {
        request.settings.folderTemplate = pathTemplate;
        EXPECT_THROW(run(), OffloadError) << pathTemplate;
    }
    EXPECT_TRUE(std::filesystem::is_empty(destination.path()));

    request.settings.folderTemplate = "{Dest}/session";
    const auto outcome = run(atFirst<Phase::Copying>(
        [&] {
            std::filesystem::rename(destination / "session/DCIM", destination / "aside");
            std::filesystem::create_symlink(outside.path(), destination / "session/DCIM");
        },
        "DCIM/2"));
    EXPECT_EQ(outcome.status, OutcomeStatus::Failed);
    EXPECT_TRUE(std::filesystem::is_empty(outside.path()));
}

TEST_F(CopyEngineTest, CancellingAtEveryMoment) {
    for (const auto* name : {"1", "2", "3"})
        writeFile(card / name, bytesOf(2 * kMiB));

    stop.request_stop();
    EXPECT_THROW(run(), CancellationError);
    EXPECT_TRUE(std::filesystem::is_empty(destination.path())) << "cancelled before the walk";

    stop = {};
    request.planFormats = [&](const auto&, const auto&, const std::stop_token& asked) {
        stop.request_stop();
        EXPECT_TRUE(asked.stop_requested()) << "whoever plans hears of it";
        return [](const auto&) {
            return std::vector<HashFormat>{};
        };
    };
    EXPECT_THROW(run(), CancellationError);
    EXPECT_TRUE(std::filesystem::is_empty(destination.path())) << "cancelled behind the walk";
    request.planFormats = nullptr;

    // After the last chunk of a file: the check inside the file comes first.
    stop = {};
    int chunks = 0;
    const auto inFile = run([&](const OffloadPhase& phase) {
        if (std::holds_alternative<Phase::Copying>(phase) && ++chunks == 5)
            stop.request_stop();
    });
    EXPECT_EQ(inFile.status, OutcomeStatus::Failed);
    EXPECT_EQ(
        verdicts(inFile),
        (Verdicts{{"1", "COPY/copied_unverified"}, {"2", "FAIL/failed"}, {"3", "FAIL/failed"}}));
    // What was on its way to the disk when the stop came is there, and counts.
    const auto written = std::filesystem::file_size(inFile.sessionRoot / "2");
    EXPECT_TRUE(written == kMiB || written == 2 * kMiB) << written;
    EXPECT_EQ(inFile.bytesCopied, static_cast<std::int64_t>(2 * kMiB + written));
    EXPECT_FALSE(std::filesystem::exists(inFile.sessionRoot / "3"));

    // A file's way is told at its end, when no check is left but the one between files.
    stop = {};
    auto observer = record.observer();
    observer.log = [&](const std::string&) {
        stop.request_stop();
    };
    EXPECT_THROW(CopyEngine::run(request, observer, stop.get_token()), CancellationError);
    EXPECT_EQ(readFile(destination / "session_2/1"), bytesOf(2 * kMiB)) << "whole, and stays";
    EXPECT_FALSE(std::filesystem::exists(destination / "session_2/2"));

    stop = {};
    EXPECT_THROW(run(atFirst<Phase::Verifying>([&] { stop.request_stop(); })), CancellationError)
        << "cancelled in the read-back of a file that is not the last";

    // Small ones may have been read by then.
    for (const auto& [size, fraction] :
         {std::pair(std::size_t{2'097'152}, 0.93), {5, 0.99}, {0, 0.0}}) {
        for (const auto* name : {"1", "2", "3"})
            writeFile(card / name, bytesOf(size));
        stop = {};
        const auto inLastReadBack = run([&, least = fraction](const OffloadPhase& phase) {
            const auto* verifying = std::get_if<Phase::Verifying>(&phase);
            if (verifying && verifying->file == "3" && verifying->fraction >= least)
                stop.request_stop();
        });
        EXPECT_EQ(inLastReadBack.status, OutcomeStatus::Failed);
        EXPECT_EQ(verdicts(inLastReadBack),
                  (Verdicts{{"1", "COPY/verified"}, {"2", "COPY/verified"}, {"3", "FAIL/failed"}}));
    }
}

TEST_F(CopyEngineTest, TheSessionFolderAndItsFilesAreAlwaysItsOwn) {
    for (const auto* name : {"a", "b"})
        writeFile(card / name, "new");
    writeFile(destination / "session/a", "old");
    // Another run takes the next name between this run's choice of it and its first file.
    request.planFormats = [&](const auto&, const auto&,
                              const auto&) -> CopyEngine::Request::FormatsOf {
        std::filesystem::create_directory(destination / "session_2");
        return {};
    };
    EXPECT_EQ(run().sessionRoot, destination / "session_3");
    request.planFormats = nullptr;
    EXPECT_EQ(readFile(destination / "session/a"), "old");

    const auto place = destination / "session_4/a";
    const auto outcome =
        run(atFirst<Phase::Copying>([&] { writeFile(place, "a stranger's"); }, "a"));
    EXPECT_EQ(verdicts(outcome), (Verdicts{{"a", "FAIL/failed"}, {"b", "FAIL/failed"}}));
    EXPECT_THAT(record.problems,
                ElementsAre("Copying stopped at a: " + destination.path().native() +
                            ": another file of that name stands on this disk"));
    EXPECT_EQ(readFile(place), "a stranger's");
}

TEST_F(CopyEngineTest, LongNamesAndDeepTrees) {
    // On the card the path is as long as a path can be, with the longest of names and many levels.
    constexpr int kLevels = 1005;
    const std::string longest(255, 'e');
    std::filesystem::path tooDeep = longest;
    for (int level = 0; level < kLevels; ++level)
        tooDeep /= "d";
    while ((card / tooDeep).native().size() < PATH_MAX - 300)
        tooDeep /= longest;
    while ((card / tooDeep).native().size() < PATH_MAX - 250)
        tooDeep /= "d";
    tooDeep /= std::string(PATH_MAX - 2 - (card / tooDeep).native().size(), 'z');
    writeFile(card / tooDeep, "deep");
    EXPECT_EQ(verdicts(run())[tooDeep], "COPY/verified") << "too long a path for who uses paths";
    const OffloadProblem ofIt{OffloadProblem::Kind::CopyStopped, tooDeep,
                              describe(PosixError("open", card / tooDeep, ENOSPC))};
    EXPECT_LT(ofIt.text(L10n(AppLanguage::English)).size(), 600u) << "a line for people";
    EXPECT_THAT(ofIt.text(L10n(AppLanguage::Turkish)), HasSubstr("eee…zzz"));
    // More levels than the standard library can remove.
    test::run({"rm", "-r", card / longest, destination / "session"});
}
