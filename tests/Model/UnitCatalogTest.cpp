#include "Model/Units/UnitCatalog.h"
#include "support/Files.h"

#include <gmock/gmock.h>

using namespace slatewise;
using namespace slatewise::test;
using ::testing::ElementsAre;
using ::testing::MatchesRegex;

namespace {

std::vector<std::string> names(const UnitCatalog& catalog) {
    std::vector<std::string> result;
    for (const auto& set : catalog.sets)
        result.push_back(set.name);
    return result;
}

UnitCatalog catalogOf(const std::vector<std::string>& setNames, std::size_t selected = 0) {
    UnitCatalog catalog;
    for (std::size_t set = 0; set < setNames.size(); ++set)
        catalog.sets.push_back({"id" + std::to_string(set), setNames[set]});
    catalog.selectedSetID = catalog.sets[selected].id;
    return catalog;
}

constexpr auto kDefaultUnits = {"CamA", "CamB", "CamC", "CamD", "Drone", "Gimbal", "Ses"};

} // namespace

TEST(UnitCatalog, TakesUpWhatIsStored) {
    struct Case {
        const char* stored;
        std::vector<std::string> sets;
        const char* selectedID;
        bool isSaved;
    };
    // clang-format off
    const std::vector<Case> cases = {
        {R"({"sets":[{"id":"X","name":"Gece"},{"id":"Y","name":"B"}],"selectedSetID":"Y"})", {"Gece", "B"}, "Y", false},
        // What an earlier numbering left is renamed under the same ids.
        {R"({"sets":[{"id":"X","name":"Set 3"},{"id":"Y","name":"Gün 2"}],"selectedSetID":"X"})", {"Ekip3", "Gün 2"}, "X", true},
        {R"({"sets":[{"id":"X","name":"Set A"},{"id":"Y","name":"B"}],"selectedSetID":"X"})", {"Set A", "B"}, "X", false},
        {R"({"sets":[{"id":"X","name":"A"}],"selectedSetID":"gone"})", {"A"}, "X", true},
        {R"({"sets":[{"id":"X","name":"A"}]})", {"A"}, "X", false},
        // Nothing but the earlier numbering, or nothing to be read.
        {R"({"sets":[{"id":"X","name":"Set 1"},{"id":"Y","name":"Set 2"}],"selectedSetID":"X"})", {"Ekip1", "Ekip2"}, nullptr, true},
        {R"({"sets":[],"selectedSetID":"X"})", {"Ekip1", "Ekip2"}, nullptr, false},
        {R"({"sets":[{"id":7,"name":"A"}]})", {"Ekip1", "Ekip2"}, nullptr, false},
        {"no JSON", {"Ekip1", "Ekip2"}, nullptr, false},
    };
    // clang-format on
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.stored);
        TemporaryDefaults stored;
        stored.defaults.setValue("unitCatalog", testCase.stored);
        const auto catalog = UnitCatalog::load(stored.defaults);
        EXPECT_EQ(names(catalog), testCase.sets);
        if (testCase.selectedID) {
            EXPECT_EQ(catalog.selectedSetID, testCase.selectedID);
        }
        EXPECT_EQ(catalog.selectedSetID, catalog.selectedSet().id);
        EXPECT_THAT(catalog.units, ::testing::ElementsAreArray(kDefaultUnits));
        EXPECT_EQ(stored.defaults.value("unitCatalog") != testCase.stored, testCase.isSaved);
        if (testCase.isSaved) {
            const auto again = UnitCatalog::load(stored.defaults);
            EXPECT_EQ(again, catalog) << "what is saved is what was loaded";
        }
    }
}

TEST(UnitCatalog, StoresSetsAndNoUnits) {
    TemporaryDefaults stored;
    auto catalog = UnitCatalog::load(stored.defaults);
    EXPECT_FALSE(stored.defaults.value("unitCatalog")) << "a blank one is not worth storing";
    EXPECT_THAT(catalog.selectedSetID,
                MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[0-9A-F]{4}-[0-9A-F]{12}"));
    catalog.addUnit("Crane");
    catalog.addSet("Gece");
    catalog.save(stored.defaults);
    const auto again = UnitCatalog::load(stored.defaults);
    EXPECT_EQ(again.sets, catalog.sets);
    EXPECT_EQ(again.selectedSet().name, "Gece");
    EXPECT_THAT(again.units, ::testing::ElementsAreArray(kDefaultUnits));
}

TEST(UnitCatalog, AddsASetOrSelectsTheOneOfThatName) {
    struct Case {
        std::vector<std::string> before;
        const char* name;
        const char* inForce;
        std::size_t countAfter;
    };
    const std::vector<Case> cases = {
        {{"Ekip1"}, "ekip1", "Ekip1", 1}, {{"Ekip1", "ekip7"}, "", "Ekip8", 3},
        {{"Gece"}, "  ", "Ekip1", 2},     {{"Ekip1"}, " A/B ", "A-B", 2},
        {{"Ekip1 x"}, "", "Ekip1", 2},    {{"GÜN"}, "gün", "GÜN", 1},
    };
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.name);
        auto catalog = catalogOf(testCase.before);
        EXPECT_EQ(catalog.addSet(testCase.name), testCase.inForce);
        EXPECT_EQ(catalog.selectedSet().name, testCase.inForce);
        EXPECT_EQ(catalog.sets.size(), testCase.countAfter);
    }
}

TEST(UnitCatalog, DeletesSetsButForTheLast) {
    struct Case {
        std::size_t selected;
        std::vector<std::string> left;
        const char* selectedAfter;
    };
    for (const auto& testCase :
         {Case{0, {"B", "C"}, "B"}, Case{1, {"A", "C"}, "C"}, Case{2, {"A", "B"}, "B"}}) {
        auto catalog = catalogOf({"A", "B", "C"}, testCase.selected);
        catalog.deleteSelectedSet();
        EXPECT_EQ(names(catalog), testCase.left);
        EXPECT_EQ(catalog.selectedSet().name, testCase.selectedAfter);
    }
    auto last = catalogOf({"A"});
    last.deleteSelectedSet();
    EXPECT_THAT(names(last), ElementsAre("A"));
    last.renameSelectedSet(" ");
    EXPECT_THAT(names(last), ElementsAre("A"));
    last.renameSelectedSet(" N/1 ");
    EXPECT_THAT(names(last), ElementsAre("N-1"));
}

TEST(UnitCatalog, CleansUnitsAndListsEachOnce) {
    auto catalog = UnitCatalog::blank();
    EXPECT_EQ(catalog.addUnit(" A/B "), "A-B");
    EXPECT_EQ(catalog.addUnit("A-B"), "A-B");
    EXPECT_EQ(catalog.addUnit("cama"), "cama") << "other case, other unit";
    EXPECT_EQ(catalog.addUnit(" \n"), std::nullopt);
    EXPECT_EQ(catalog.units.size(), 9u);
    catalog.removeUnit("CamA");
    EXPECT_EQ(catalog.units.front(), "CamB");
}
