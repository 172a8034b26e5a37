#include "Batch/BatchPlan.h"
#include "Batch/ProgressTexts.h"
#include "Batch/SpaceCheck.h"
#include "Batch/TimeLeft.h"
#include "Language/L10n.h"
#include "Model/Copying/BatchOutcome.h"
#include "Model/Settings/TemplatePreview.h"
#include "Model/Volumes/VolumeTexts.h"

#include <gmock/gmock.h>

#include <cerrno>

using namespace slatewise;

namespace {

ClassifiedVolume volume(const std::string& name, std::int64_t freeBytes = 0) {
    ClassifiedVolume result;
    result.facts.deviceIdentifier = "dev-" + name;
    result.facts.volumeName = name;
    result.facts.mountPoint = "/media/" + name;
    result.facts.freeBytes = freeBytes;
    result.kind = VolumeKind::CameraCard;
    return result;
}

constexpr L10n kEnglish(AppLanguage::English);
constexpr L10n kTurkish(AppLanguage::Turkish);

} // namespace

TEST(ProgressTexts, RunOnceAcrossTheBatch) {
    const BatchPosition single;
    const BatchPosition secondOfTwo = {"Card 2/2 · x", 1, 2};
    struct Case {
        OffloadPhase phase;
        BatchPosition position;
        double fraction;
        const char* percent;
        const char* title;
    };
    const std::vector<Case> cases = {
        {Phase::Idle{}, single, 0, "0%",
         "Select a card, a unit, and a destination, then press Copy."},
        {Phase::Scanning{}, single, 0, "0%", "Scanning card…"},
        {Phase::Scanning{}, secondOfTwo, 0.5, "50%", "Card 2/2 · x — Scanning card…"},
        {Phase::Scanning{"a.mov", 3, 10, 0.25, 1000}, single, 0.25, "25%",
         "Hashing 3 / 10  ·  a.mov  ·  1 KB/s"},
        {Phase::Copying{"a\nb.mov", 3, 10, 0.254, 350'000'000.9}, single, 0.254, "25%",
         "Copying 3 / 10  ·  a␊b.mov  ·  350 MB/s"},
        {Phase::Verifying{"a.mov", 3, 10, 1.2, 1000}, single, 1, "100%",
         "Verifying 4 / 10  ·  a.mov  ·  1 KB/s"},
        {Phase::Verifying{"a.mov", 0, 10, 0.9}, secondOfTwo, 0.95, "95%",
         "Card 2/2 · x — Verifying 1 / 10  ·  a.mov  ·  0 bytes/s"},
        {Phase::Verified{12, 3'500'000}, secondOfTwo, 1, "100%", "Verified — 12 files, 3.5 MB"},
        {Phase::Verified{12, 3'500'000, 2}, secondOfTwo, 1, "100%",
         "Verified — 12 files to 2 disks, 3.5 MB"},
        {Phase::Hashed{1}, single, 1, "100%", "Hashed — 1 files (not copied)"},
        {Phase::Failed{"why"}, secondOfTwo, 0, "0%", "Failed: why"},
    };
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.title);
        const auto fraction = ProgressTexts::fraction(testCase.phase, testCase.position);
        EXPECT_DOUBLE_EQ(fraction, testCase.fraction);
        EXPECT_EQ(ProgressTexts::percent(fraction), testCase.percent);
        EXPECT_EQ(ProgressTexts::title(testCase.phase, testCase.position, kEnglish),
                  testCase.title);
    }
    EXPECT_EQ(ProgressTexts::title(Phase::Copying{"a", 1, 2, 0, 1000}, single, kTurkish),
              "Kopyalanıyor 1 / 2  ·  a  ·  1 KB/sn");
    EXPECT_EQ(ProgressTexts::title(Phase::Idle{}, single, kEnglish, true),
              "Select a card, a unit, and a destination, then press Hash only.");
}

TEST(ProgressTexts, SayHowMuchIsDoneAndHowLongTheWholeBatchStillTakes) {
    using std::chrono::seconds;
    const BatchTimeLeft::Time start;
    // The second pair has twice as much to copy, and nobody knows about the third.
    BatchTimeLeft timeLeft({1'000, 2'000, 0});
    timeLeft.beginPair(0, start);
    const auto copying = [](double share, std::int64_t bytes) {
        return OffloadPhase(Phase::Copying{"a", 1, 2, 0.85 * share, 100, bytes, 1'000'000});
    };
    EXPECT_EQ(timeLeft.update(copying(0, 0), start), BatchPace()) << "nothing to go by";
    // Half is copied in 100 s: as much again, and 100 s to read it back; three times 300 s behind.
    const auto halfway = start + seconds(100);
    const auto unknown = timeLeft.update(copying(0.5, 500'000), halfway);
    EXPECT_EQ(unknown.left, seconds(200 + 3 * 300));
    EXPECT_EQ(ProgressTexts::pace(unknown, kTurkish), "18:20 kaldı");
    timeLeft.beginPair(2, halfway);
    EXPECT_FALSE(timeLeft.update(copying(0, 0), halfway).left);
    EXPECT_EQ(timeLeft.update(copying(0.5, 1), halfway + seconds(100)).left, seconds(200));
    // Bytes are those of the batch, as the time and the bar are.
    timeLeft = BatchTimeLeft({3'000'000, 900'000, 2'000'000});
    timeLeft.beginPair(1, start);
    timeLeft.update(copying(0, 0), start);
    const auto known = timeLeft.update(copying(0.5, 500'000), halfway);
    EXPECT_EQ(known.bytes, (BatchPace::Bytes{3'500'000, 6'000'000}));
    EXPECT_THAT(ProgressTexts::pace(known, kEnglish), ::testing::StartsWith("3.5 MB / 6 MB  ·  "));
    const Phase::Verifying verifying{"a", 1, 2, 0.9, 1, 20, 40};
    EXPECT_FALSE(timeLeft.update(verifying, halfway).bytes) << "a pair is read back by itself";
    EXPECT_EQ(BatchTimeLeft({40}).update(verifying, halfway).bytes, (BatchPace::Bytes{20, 40}));
    // Hashing has the whole bar, in whatever phase.
    timeLeft.beginPair(1, start);
    timeLeft.update(Phase::Scanning{"a", 1, 2, 0, 1, 0, 40}, start);
    EXPECT_EQ(timeLeft.update(Phase::Scanning{"a", 1, 2, 0.5, 1, 20, 40}, halfway).left,
              seconds(100 + 444));
    EXPECT_EQ(ProgressTexts::pace({}, kEnglish), "");
}

TEST(BatchOutcome, SaysWhatToDoAboutEachCauseAndWhetherTheCardIsThere) {
    using Kind = OffloadProblem::Kind;
    struct Case {
        std::vector<OffloadProblem> problems;
        PairFailure failure;
        bool wasHashing;
        const char* headline;
        const char* advice;
        std::optional<OffloadError> error{};
        OutcomeStatus runStatus = OutcomeStatus::Failed;
    };
    const std::filesystem::filesystem_error noRoom(
        "copy", "/D", std::make_error_code(std::errc::no_space_on_device));
    constexpr auto kOther = PairFailure::Other;
    // clang-format off
    const std::vector<Case> cases = {
        {{{Kind::CopyStopped, "a"}, {Kind::CardGone, "A"}}, kOther, false, "The card A is no longer there.", "Put the card in again, tick it and press Copy."},
        {{{Kind::CardSilent, "A"}}, kOther, true, "", "Put the card in again, tick it and press Hash only."},
        {{{Kind::DiskReplaced, "D"}}, kOther, false, "", "Connect the disk again, tick it and press Copy."},
        {{{Kind::DiskSilent, "D"}}, kOther, false, "", "Connect the disk again, "},
        {{{Kind::CopyDiffers, "a"}}, kOther, false, "", "Do not wipe the card. Copy it again, preferably to another"},
        {{{Kind::PagesNotWritten, "D"}, {Kind::ReportsOutdated, "D"}, {Kind::CopyDiffers, "a"}}, kOther, false, "The copy of a differs from the card. Card was left mounted.", "Do not wipe the card. Copy it again, preferably to another"},
        {{OffloadProblem::of(Kind::ReportsNotCopied, "D", noRoom)}, kOther, false, "there is no room left on the disk. Card was left mounted.", "Make room on the disk"},
        {{{Kind::HashingStopped, "a"}}, kOther, true, "", "Do not wipe the card. Press Hash only again; if"},
        {{{Kind::CopyStopped, "a", "", ENOSPC}}, kOther, false, "", "Make room on the disk"},
        {{{Kind::CopyStopped, "a", "", EFBIG}}, kOther, false, "", "Do not wipe the card. This disk cannot take it: choose another one and press Copy."},
        {{{Kind::FoldersFellTogether, "a"}}, kOther, false, "", "Do not wipe the card. This disk cannot take it"},
        {{{Kind::NotReadBack, "a", "", EINVAL}}, kOther, false, "", "Do not wipe the card. Copy it again, preferably to another"},
        {{{Kind::ListedFileMissing, "a"}}, kOther, false, "", "Do not wipe the card. It is not what its own list says"},
        {{OffloadProblem::of(Kind::ReportsNotCopied, "D", noRoom)}, kOther, false, "", "The copy itself is complete, its reports are not. Mend the cause and press Copy again.", {}, OutcomeStatus::Verified},
        {{{Kind::ReportsNotArchived, "D"}}, kOther, true, "", "Everything was hashed", {}, OutcomeStatus::Hashed},
        {{{Kind::CopyGone, "a"}}, kOther, true, "", "Do not wipe the card. Press Hash only to try again."},
        {{}, kOther, false, "", "Make room on the disk", OffloadError(OffloadError::InsufficientSpace{2, 1, "D"})},
        {{}, kOther, false, "Verification did not finish (A → D). Card was left mounted.", "Do not wipe the card. Press Copy to try again."},
        {{{Kind::CopyStopped, "a"}}, PairFailure::Stopped, false, "Cancelled.", "You stopped it. Do not wipe the card; press Copy"},
        {{{Kind::ReportsNotAwaited, "A → D"}}, PairFailure::Stopped, false, "Stopped while the reports were written: do not rely on them.", "You stopped it. Do not wipe the card; press Copy"},
    };
    // clang-format on
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.advice);
        BatchOutcome::FailedPair failed;
        failed.planned.card = volume("A");
        failed.planned.destination = volume("D");
        failed.planned.name = "A → D";
        failed.result.problems = testCase.problems;
        failed.result.failure = testCase.failure;
        failed.result.error = testCase.error;
        failed.result.runStatus = testCase.runStatus;
        EXPECT_THAT(BatchOutcome::advice(failed, testCase.wasHashing, kEnglish),
                    ::testing::StartsWith(testCase.advice));
        EXPECT_THAT(BatchOutcome::headline(failed, true, kEnglish),
                    ::testing::EndsWith(*testCase.headline ? testCase.headline
                                                           : ". Card was left mounted."));
        EXPECT_THAT(BatchOutcome::headline(failed, false, kEnglish),
                    ::testing::Not(::testing::HasSubstr("left mounted")));
    }
}

TEST(ProgressTexts, SayWhatAVolumeHolds) {
    using Side = VolumeSide;
    ContentSizes sizes;
    VolumeLists lists;
    lists.cards = {volume("measured"), volume("measuring")};
    const auto job = sizes.begin(lists, {}, {});
    sizes.accept(job->generation, "dev-measured", 5'000);
    auto picked = volume("measured");
    picked.reasons = {std::string(pickedReason)};
    picked.facts.mountPoint = "dev-measured";
    const auto line = [&](const ClassifiedVolume& each, Side side, L10n l10n = kEnglish) {
        return VolumeTexts::subtitle(each, side, sizes, l10n);
    };
    EXPECT_EQ(line(volume("measured"), Side::Card), "5 KB");
    EXPECT_EQ(line(picked, Side::Card), "5 KB · folder");
    EXPECT_EQ(line(volume("measuring"), Side::Card, kTurkish), "boyut…");
    EXPECT_EQ(line(volume("unheard of"), Side::Card), "");
    EXPECT_EQ(line(volume("measured", 7'000'000), Side::Destination), "7 MB free");
    EXPECT_EQ(line(volume("measuring"), Side::Destination), "size…");
    EXPECT_EQ(line(volume("unheard of"), Side::Destination), "0 bytes");
    auto locked = volume("locked", 7'000'000);
    locked.facts.writeObstacle = WriteObstacle::NoPermission;
    EXPECT_EQ(line(locked, Side::Destination), "You may not write to this disk");
    auto bare = volume("bare", 7'000'000);
    bare.reasons = {std::string(pickedReason)};
    bare.isBare = true;
    EXPECT_EQ(line(bare, Side::Destination), "No disk is mounted here");
}

TEST(ContentSizes, TheLatestJobForAVolumePublishesIt) {
    ContentSizes sizes;
    VolumeLists lists;
    lists.cards = {volume("A"), volume("B")};
    auto disk = volume("D");
    disk.kind = VolumeKind::Destination;
    lists.destinations = {disk, volume("override")};
    const auto first = sizes.begin(lists, {}, {".Trashes"});
    using What = MeasuringEntry::What;
    std::vector<What> whats;
    for (const auto& entry : first->entries)
        whats.push_back(entry.what);
    EXPECT_THAT(whats, ::testing::ElementsAre(What::CopyableBytes, What::CopyableBytes,
                                              What::UsedBytes, What::CopyableBytes));
    EXPECT_TRUE(sizes.accept(first->generation, "dev-A", 10));
    EXPECT_TRUE(sizes.isMeasuringAny(lists.cards));

    const auto second = sizes.begin(lists, {"dev-A"}, {});
    EXPECT_EQ(second->entries.size(), 1u) << "what is under way stays with the first";
    EXPECT_FALSE(sizes.accept(first->generation, "dev-A", 99));
    EXPECT_EQ(sizes.usedBytes("dev-A"), 10) << "the old value shows until there is a new one";
    EXPECT_TRUE(sizes.accept(second->generation, "dev-A", 7));
    for (const auto* id : {"dev-B", "dev-D", "dev-override"})
        EXPECT_TRUE(sizes.accept(first->generation, id, 7));
    EXPECT_EQ(sizes.totalOf(lists.cards), 14);
    EXPECT_FALSE(sizes.isMeasuringAny(lists.cards));

    EXPECT_FALSE(sizes.begin(lists, {}, {})) << "nothing is measured twice";
    lists.cards.pop_back();
    EXPECT_FALSE(sizes.begin(lists, {}, {}));
    EXPECT_EQ(sizes.usedBytes("dev-B"), std::nullopt) << "gone with its volume";
}

TEST(SpaceCheck, WantsRoomForAllCardsOnEachDestination) {
    struct Case {
        std::int64_t total;
        std::vector<std::int64_t> free;
        std::optional<std::int64_t> asked;
        std::optional<std::int64_t> needed;
    };
    const std::vector<Case> cases = {
        {0, {1}, {}, std::nullopt},
        {1'000'000'000, {1'010'000'000}, {}, std::nullopt},
        {1'000'000'000, {2'000'000'000, 1'009'999'999}, {}, 1'010'000'000},
        // The disk was emptied since it was looked at.
        {1'000'000'000, {5}, 2'000'000'000, std::nullopt},
        {838'860'799, {838'860'799 + 8'388'607}, {}, 838'860'799 + 8'388'608},
        {838'860'800, {838'860'800 + 8'388'608}, {}, std::nullopt},
        {1'000, {0}, 999, 1'000 + 8'388'608},
        {1'000, {0}, {}, std::nullopt},
        {1'000, {0}, 0, 1'000 + 8'388'608}, // full, not unknown
    };
    for (const auto& testCase : cases) {
        std::vector<ClassifiedVolume> destinations;
        for (const auto free : testCase.free)
            destinations.push_back(volume("D" + std::to_string(destinations.size()), free));
        const auto lack = SpaceCheck::findLackOfRoom(testCase.total, destinations,
                                                     [&](const auto&) { return testCase.asked; });
        ASSERT_EQ(lack.has_value(), testCase.needed.has_value()) << testCase.total;
        if (lack) {
            const auto& space = std::get<OffloadError::InsufficientSpace>(lack->reason());
            EXPECT_EQ(space.needed, testCase.needed);
            EXPECT_EQ(space.disk, destinations.back().name()) << "the last one lacks it";
            EXPECT_THAT(lack->text(kEnglish), ::testing::HasSubstr(" destination D"));
            EXPECT_THAT(lack->text(kTurkish), ::testing::HasSubstr(": D"));
        }
    }
}

TEST(BatchPlan, NamesPairsWhereThereAreSeveral) {
    const auto labels = [](int cards, int destinations, AppLanguage language) {
        BatchPlan plan;
        plan.language = language;
        for (int card = 1; card <= cards; ++card)
            plan.cards.push_back(volume("A" + std::to_string(card)));
        for (int destination = 1; destination <= destinations; ++destination)
            plan.destinations.push_back(volume("D" + std::to_string(destination)));
        plan.cameraByCardID = {{"dev-A1", "CamA"}};
        std::vector<std::string> result;
        for (const auto& pair : plan.pairs())
            result.push_back(pair.position.label);
        return result;
    };
    using ::testing::ElementsAre;
    EXPECT_THAT(labels(1, 1, AppLanguage::English), ElementsAre(""));
    EXPECT_THAT(labels(2, 1, AppLanguage::English),
                ElementsAre("Card 1/2 · CamA · A1 → D1", "Card 2/2 ·  · A2 → D1"));
    EXPECT_THAT(labels(1, 2, AppLanguage::Turkish),
                ElementsAre("Kart 1/1 · Hedef 1/2 · CamA · A1 → D1",
                            "Kart 1/1 · Hedef 2/2 · CamA · A1 → D2"));
}

TEST(TemplatePreview, ShowsAnExampleWithWhatIsChosen) {
    const std::string path = "{Dest}/{Project}/{Ekip}/{Cam}/{CardName}";
    EXPECT_EQ(TemplatePreview::line(path, {}, kEnglish),
              "/Volumes/Backup/PROJECT/EKIP/UNIT/CARD_NAME");
    TemplatePreview::Selected selected;
    selected.values = {"/media/SSD1", "A001", "CamA", "Ekip1", "Kış", {}};
    selected.cardCount = 3;
    EXPECT_EQ(TemplatePreview::line(path, selected, kEnglish),
              "/media/SSD1/Kış/Ekip1/CamA/A001  (+2 cards)");
    selected.destinationCount = 2;
    EXPECT_EQ(TemplatePreview::line("x", selected, kTurkish), "/media/SSD1/x  (+2 kart, +1 hedef)");
}

TEST(TemplatePreview, NamesEveryTokenAndPresetInBothLanguages) {
    for (const auto& token : FolderTemplate::tokens) {
        const auto english = TemplatePreview::tokenLabel(token.token, AppLanguage::English);
        EXPECT_NE(english, token.token) << "has a label";
        EXPECT_EQ(TemplatePreview::tokenLabel(token.token, AppLanguage::Turkish), token.label);
    }
    EXPECT_EQ(TemplatePreview::tokenLabel("_", AppLanguage::English), "Underscore");
    for (const auto& choice : FolderTemplate::choices) {
        EXPECT_NE(TemplatePreview::choiceName(choice, AppLanguage::English), choice.name);
        EXPECT_EQ(TemplatePreview::choiceName(choice, AppLanguage::Turkish), choice.name);
    }
    EXPECT_EQ(TemplatePreview::choiceBlurb(FolderTemplate::choices[2], AppLanguage::English),
              "The same card the same day gets _2");
}
