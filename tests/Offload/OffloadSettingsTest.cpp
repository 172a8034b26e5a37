#include "Offload/OffloadSettings.h"

#include "Offload/FolderTemplate.h"
#include "Offload/MediaMetadata.h"
#include "Offload/OffloadError.h"
#include "Offload/TreeWalker.h"
#include "support/Files.h"

#include <gmock/gmock.h>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

TEST(OffloadSettings, SurviveARestart) {
    TemporaryDefaults stored;
    OffloadSettings settings;
    settings.folderTemplate = "{Dest}/{Ekip}, \"x\"/{CardName}";
    settings.ejectAfterSuccess = true;
    settings.verifyOnly = true;
    settings.outputFolderPath = "/media/Ünal; reports";
    settings.projectName = "Kış Uykusu";
    settings.addExclude("MISC");
    settings.setDefaultSkipped(".DS_Store", false);
    settings.save(stored.defaults);
    EXPECT_EQ(OffloadSettings::load(stored.defaults), settings);
    // Also a template that was the default of an older version, once somebody has chosen it.
    settings.folderTemplate = "{Dest}/{YYYY-MM-DD}/{Cam}_{CardName}_{HHmmss}";
    settings.save(stored.defaults);
    EXPECT_EQ(OffloadSettings::load(stored.defaults), settings);
}

TEST(OffloadSettings, LoadWhatCanBeRead) {
    const OffloadSettings defaults;
    const std::map<std::string, OffloadSettings> cases = {
        {"", defaults},
        {"not JSON", defaults},
        {"[1, 2]", defaults},
        {R"({"verifyOnly": "yes", "projectName": "P"})", defaults},
        {R"({"unknown": 1, "projectName": null})", defaults},
        {R"({"folderTemplate": "{Dest}/{YYYY-MM-DD}/{CardName}_{HHmmss}"})", defaults},
        {R"({"folderTemplate": "{Dest}/{YYYY-MM-DD}/{Cam}_{CardName}_{HHmmss}"})", defaults},
        {R"({"folderTemplate": "{Dest}/{YYYY-MM-DD}/{Cam}/{CardName}_{HHmmss}"})", defaults},
    };
    for (const auto& [blob, expected] : cases) {
        TemporaryDefaults stored;
        stored.defaults.setValue("offloadSettings", blob);
        EXPECT_EQ(OffloadSettings::load(stored.defaults), expected) << blob;
    }
    TemporaryDefaults stored;
    stored.defaults.setValue("offloadSettings", R"({"folderTemplate": "{CardName}"})");
    OffloadSettings onlyTemplate;
    onlyTemplate.folderTemplate = "{CardName}";
    EXPECT_EQ(OffloadSettings::load(stored.defaults), onlyTemplate);
}

TEST(OffloadSettings, ExcludesAreNamesAndStaySorted) {
    OffloadSettings settings;
    for (const auto* typed : {"clip 10", "/Volumes/CARD/CACHE/", "clip 9", "CACHE", " / ", ""})
        settings.addExclude(typed);
    EXPECT_THAT(settings.extraExcludes, ElementsAre("CACHE", "clip 9", "clip 10"));
    settings.removeExclude("clip 9");
    EXPECT_TRUE(settings.skipNames().contains("CACHE"));
    EXPECT_FALSE(settings.skipNames().contains("clip 9"));
}

TEST(OffloadSettings, DefaultNamesCanBeSwitchedOffAndOn) {
    OffloadSettings settings;
    settings.setDefaultSkipped("no default name", false);
    EXPECT_THAT(settings.copyDespiteSkipNames, IsEmpty());
    settings.setDefaultSkipped(".Trashes", false);
    settings.setDefaultSkipped(".Trashes", false);
    EXPECT_THAT(settings.copyDespiteSkipNames, ElementsAre(".Trashes"));
    EXPECT_FALSE(settings.isDefaultSkipped(".Trashes"));
    EXPECT_FALSE(settings.skipNames().contains(".Trashes"));

    settings.addExclude(".Trashes");
    EXPECT_THAT(settings.extraExcludes, IsEmpty()) << "naming a default one switches it on again";
    EXPECT_EQ(settings.skipNames(), TreeWalker::defaultSkipNames());

    settings.setDefaultSkipped(".DS_Store", false);
    settings.setDefaultSkipped(".DS_Store", true);
    EXPECT_EQ(settings.skipNames(), TreeWalker::defaultSkipNames());
}

TEST(OffloadError, SpeaksWithPlainAndAdaptedNumbers) {
    EXPECT_EQ(OffloadError(OffloadError::SizeMismatch{1'048'577, 1'048'576}).localizedDescription(),
              "Size mismatch (source 1048577, copy 1048576).");
    EXPECT_EQ(
        OffloadError(OffloadError::InsufficientSpace{29'360'128, 1000}).localizedDescription(),
        "Not enough space on the destination (need 29.4 MB, 1 KB free).");
}

TEST(ClipEssence, CommonKeepsWhatAllThatKnowAgreeOn) {
    ClipEssence first;
    first.cameraModel = "C";
    first.width = 3840;
    first.lens = "50mm";
    ClipEssence second = first;
    second.lens = "85mm";
    second.exposureIndex = 800;
    const ClipEssence silent;
    const std::vector<const ClipEssence*> all = {&silent, &first, &second};
    ClipEssence expected;
    expected.cameraModel = "C";
    expected.width = 3840;
    expected.exposureIndex = 800;
    EXPECT_EQ(ClipEssence::common(all), expected);
    EXPECT_TRUE(ClipEssence::common({}).isEmpty());
}
