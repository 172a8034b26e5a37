#include "Offload/FolderTemplate.h"

#include "Offload/OffloadSettings.h"
#include "Platform/Files/RootFolder.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace slatewise;
using namespace slatewise::test;

namespace {

FolderTemplate::Values values() {
    return {.destination = "/media/u/SSD 1",
            .cardName = "A001",
            .camera = "CamA",
            .ekip = "Ekip1",
            .project = "Film",
            .now = *Clock::fromIso8601("2026-09-02T13:05:09Z")};
}

} // namespace

TEST(FolderTemplate, ExpandsTokens) {
    const std::map<std::string, std::string> cases = {
        {"", "/media/u/SSD 1/2026-09-02/Ekip1/CamA/A001"},
        {"  \n", "/media/u/SSD 1/2026-09-02/Ekip1/CamA/A001"},
        {"Offload/{CardName}", "/media/u/SSD 1/Offload/A001"},
        {"{DestName}/{YYYYMMDD}_{HHmmss}", "/media/u/SSD 1/SSD 1/20260902_160509"},
        {"{Dest}/{Project}/{Cam}{Cam}/", "/media/u/SSD 1/Film/CamACamA"},
        {"/elsewhere/{CardName}", "/elsewhere/A001"},
        {"{Unknown}/{cardname}", "/media/u/SSD 1/{Unknown}/{cardname}"},
    };
    for (const auto& [pathTemplate, path] : cases)
        EXPECT_EQ(FolderTemplate::expand(pathTemplate, values()), path) << pathTemplate;
}

TEST(FolderTemplate, NamesBecomeOnePathComponentEach) {
    struct Case {
        const char *pathTemplate, *card, *camera, *ekip, *project, *path;
    };
    const Case cases[] = {
        {"{Ekip}|{Cam}|{Project}|{CardName}", " A/B ", "\t", " C/D ", "", "C-D|CAM|PROJECT| A-B "},
        {"{Ekip}/{Cam}/{Project}/{CardName}", "..", " .. ", ".", "..", "EKIP/CAM/PROJECT/CARD"},
        {"{CardName}", "{HHmmss}{Cam}", "x", "x", "x", "{HHmmss}{Cam}"}, // a name is no template
    };
    auto named = values();
    for (const auto& [pathTemplate, card, camera, ekip, project, path] : cases) {
        named.cardName = card;
        named.camera = camera;
        named.ekip = ekip;
        named.project = project;
        EXPECT_EQ(FolderTemplate::expand(pathTemplate, named), values().destination / path);
    }
    named.ekip = "";
    named.destination = "/";
    EXPECT_EQ(FolderTemplate::expand("{Ekip}{DestName}", named), "/EKIP-");
}

TEST(FolderTemplate, SettingsGiveTemplateAndProject) {
    OffloadSettings settings;
    settings.folderTemplate = "{Project}/{CardName}";
    settings.projectName = "Own";
    EXPECT_EQ(FolderTemplate::sessionRoot(settings, values()), "/media/u/SSD 1/Own/A001");
}

TEST(FolderTemplate, NeverLandsOnSomethingThatExists) {
    const TemporaryFolder folder;
    const RootFolder root(folder.path());
    const auto free = [&](const std::filesystem::path& wanted) {
        return FolderTemplate::uniqueExisting(wanted, root);
    };
    const std::filesystem::path wanted = "A001";
    EXPECT_EQ(free(wanted), wanted);

    std::filesystem::create_directory(folder / wanted);
    EXPECT_EQ(free(wanted), "A001_2");
    writeFile(folder / "A001_2", "a file of that name");
    EXPECT_EQ(free(wanted), "A001_3");
    std::filesystem::create_symlink("nowhere", folder / "A001_3");
    EXPECT_EQ(free(wanted), "A001_4");

    const std::pair<const char*, const char*> alike[] = {
        {"S\u0327 1", "Ş 1"}, {"bad \xff", "bad \xfe"}, {"\u212a", "K"}};
    for (const auto& [there, same] : alike) {
        const auto parent = std::filesystem::path("Ş new") / same;
        std::filesystem::create_directory(folder / there);
        EXPECT_EQ(free(same), same + std::string("_2"));
        EXPECT_EQ(free(parent), parent) << "what lies elsewhere takes no name";
    }
    EXPECT_EQ(free("day/ascmhl"), "day/ascmhl_2") << "a folder of lists is called so";

    for (int number = 4; number <= 98; ++number)
        std::filesystem::create_directory(folder / ("A001_" + std::to_string(number)));
    EXPECT_EQ(free(wanted), "A001_99");
    std::filesystem::create_directory(folder / "A001_99");
    const auto last = free(wanted).filename().native();
    EXPECT_EQ(last.size(), std::string("A001_12345678").size());
    EXPECT_EQ(last.rfind("A001_", 0), 0u);
    EXPECT_NE(last, free(wanted).filename().native());
}

TEST(FolderTemplate, NothingLeadsOutOfTheDestination) {
    for (const auto* out : {"{Dest}", "{Dest}/", "{Dest}/.", "{Dest}/../x", "{Dest}{CardName}",
                            "/elsewhere/{CardName}", "a/../..", "..", "{Dest}/a/../../x",
                            "/destination/x", "{Dest}/Reports"})
        EXPECT_TRUE(FolderTemplate::leadsOut(out)) << out;
    for (const auto& choice : FolderTemplate::choices)
        EXPECT_FALSE(FolderTemplate::leadsOut(choice.pathTemplate)) << choice.name;
    EXPECT_FALSE(FolderTemplate::leadsOut("{Dest}/a/../{CardName}"));
    EXPECT_FALSE(FolderTemplate::leadsOut(""));
}
