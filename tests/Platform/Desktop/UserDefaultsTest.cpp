#include "Platform/Desktop/UserDefaults.h"

#include "Language/L10n.h"
#include "Platform/Desktop/UserFolders.h"
#include "support/Files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <map>

using namespace slatewise;
using namespace slatewise::test;

TEST(UserDefaults, KeepsAnyTextAcrossInstances) {
    const TemporaryFolder folder;
    const auto file = folder / "config/deep/settings.ini";
    const std::string awkward = R"({"a":["x, y; \"z\"","Çığ\\n"],"@b":1})"
                                "\nsecond line=%41";
    const auto usual = ::umask(0);
    UserDefaults(file).setValue("offloadSettings", awkward);
    ::umask(usual);
    EXPECT_EQ(UserDefaults(file).value("offloadSettings"), awkward);
    EXPECT_FALSE(UserDefaults(file).value("unknown"));

    using std::filesystem::perms;
    const auto rightsOf = [](const auto& path) {
        return std::filesystem::status(path).permissions();
    };
    EXPECT_EQ(rightsOf(folder / "config"), perms(0755)) << "nobody else's to write to";
    EXPECT_EQ(rightsOf(file.parent_path()), perms::owner_all);
    EXPECT_EQ(rightsOf(file), perms::owner_read | perms::owner_write);
    std::filesystem::permissions(file, perms::all);
    UserDefaults(file).setValue("appLanguage", "en");
    EXPECT_EQ(rightsOf(file), perms::owner_read | perms::owner_write);
}

TEST(UserDefaults, KeepsChangesToThisProcessWhenAskedTo) {
    const TemporaryFolder folder;
    {
        UserDefaults defaults(folder / "settings.ini");
        defaults.setValue("appLanguage", "en");
        defaults.setValue("lastDestID", "disk2");
        defaults.setValue("gone", "1");
        defaults.removeValue("gone");
        defaults.keepChangesInMemory();
        defaults.setValue("appLanguage", "tr");
        defaults.removeValue("lastDestID");
        EXPECT_EQ(defaults.value("appLanguage"), "tr");
        EXPECT_FALSE(defaults.value("lastDestID"));
    }
    const UserDefaults stored(folder / "settings.ini");
    EXPECT_EQ(stored.value("appLanguage"), "en");
    EXPECT_EQ(stored.value("lastDestID"), "disk2");
    EXPECT_FALSE(stored.value("gone"));
}

TEST(Language, IsEnglishUnlessTurkishIsStored) {
    TemporaryDefaults stored;
    EXPECT_EQ(Language::load(stored.defaults), AppLanguage::English);
    for (const auto& [value, language] : {std::pair{"fr", AppLanguage::English},
                                          {"TR", AppLanguage::English},
                                          {"", AppLanguage::English},
                                          {"tr", AppLanguage::Turkish}}) {
        stored.defaults.setValue("appLanguage", value);
        EXPECT_EQ(Language::load(stored.defaults), language) << value;
    }
    EXPECT_EQ(Language::displayName(AppLanguage::English), "English");
}

TEST(L10n, SetsArgumentsIntoBothLanguages) {
    const L10n english(AppLanguage::English);
    const L10n turkish(AppLanguage::Turkish);
    EXPECT_EQ(english.copying(3, 10, "A/B.mov", "350 MB/s"),
              "Copying 3 / 10  ·  A/B.mov  ·  350 MB/s");
    EXPECT_EQ(turkish.verifyIncomplete("A001 → SSD"), "Doğrulama tamamlanamadı (A001 → SSD).");
    EXPECT_EQ(turkish.insufficientSpace("28 MB", "24 MB"),
              "Hedefte yer yok (gerekli 28 MB, boş 24 MB).");
    EXPECT_EQ(english.fileCount(1), "1 files");
    EXPECT_EQ(english.ejectFailed("/media/A"), "Could not eject /media/A.");
}

TEST(UserFolders, FollowTheEnvironment) {
    const std::map<std::string, std::filesystem::path (*)()> cases = {
        {"XDG_DATA_HOME", UserFolders::applicationSupport},
        {"XDG_STATE_HOME", UserFolders::library},
        {"XDG_CONFIG_HOME", UserFolders::configuration},
        {"XDG_DOCUMENTS_DIR", UserFolders::documents}};
    for (const auto& [variable, folder] : cases) {
        ::setenv(variable.c_str(), "/somewhere/of/mine", 1);
        EXPECT_EQ(folder(), "/somewhere/of/mine") << variable;
        ::setenv(variable.c_str(), "relative", 1);
        EXPECT_TRUE(folder().is_absolute()) << variable;
        EXPECT_EQ(folder().native().find("relative"), std::string::npos) << variable;
        ::unsetenv(variable.c_str());
    }
}
