#include "Platform/Text.h"

#include "Platform/Clock.h"
#include "Platform/Numbers.h"

#include <gmock/gmock.h>
#include <unicode/uloc.h>

#include <cstdlib>
#include <map>
#include <thread>

using namespace slatewise;
using ::testing::ElementsAre;

TEST(Text, TrimsUnicodeBlanksAndKeepsForeignBytes) {
    EXPECT_EQ(Text::trimmed("\t\n  a b \r\n"), "a b");
    EXPECT_EQ(Text::trimmed("\uFEFF\u00a0\u2003Kamera\u3000\uFEFF"), "Kamera");
    EXPECT_EQ(Text::trimmed(" \xff "), "\xff");
    EXPECT_EQ(Text::trimmed("\xff \x80"), "\xff \x80");
    EXPECT_EQ(Text::trimmed(" \n"), "");
}

TEST(Text, ShowsMalformedBytesAsReplacement) {
    EXPECT_EQ(Text::displayable("Çekim→"), "Çekim→");
    EXPECT_EQ(Text::displayable("a\xff"
                                "b"),
              "a\xef\xbf\xbd"
              "b");
    EXPECT_EQ(Text::displayable("\xc3"), "\xef\xbf\xbd");
}

TEST(Text, WritesASignForWhatActsInsteadOfBeingSeen) {
    EXPECT_EQ(Text::visible("A\x1b[2J\n\x7f.mov"), "A␛[2J␊␡.mov");
    EXPECT_EQ(Text::visible("\u202eA\u2028\u009b\u2066Ç\xff"), "�A���Ç�");
    // An Arabic name keeps the marks that it needs.
    EXPECT_EQ(Text::visible("\u200fكاميرا 😀"), "\u200fكاميرا 😀");
}

TEST(Text, CutsAtCharactersAPersonSees) {
    EXPECT_EQ(Text::prefix("çğü", 2), "çğ");
    EXPECT_EQ(Text::prefix("e\xcc\x81x", 1), "e\xcc\x81");
    EXPECT_EQ(Text::prefix("short", 24), "short");
    EXPECT_EQ(Text::prefix("ab", 0), "");
    EXPECT_EQ(Text::shortened("çğüçğü", 6), "çğüçğü");
    EXPECT_EQ(Text::shortened("açğüçğz", 5), "aç…ğz");
}

TEST(Text, SplitsReplacesAndOrders) {
    EXPECT_THAT(Text::pieces("/a//b/", '/'), ElementsAre("a", "b"));
    EXPECT_EQ(Text::replaced("aaa", "aa", "b"), "ba");
    EXPECT_EQ(Text::pathSafeLabel(" A/B\n"), "A-B");
}

TEST(Text, OrdersNamesAsPeopleOfTheMachinesLanguageDo) {
    const std::string machine = uloc_getDefault();
    for (const std::string locale : {"en_US_POSIX", "en_US", "tr_TR"}) {
        SCOPED_TRACE(locale);
        // A letter of its own in Turkish is an accent elsewhere.
        const auto names =
            locale == "tr_TR"
                ? std::vector<std::string>{"Clip 9", "clip 10", "cz", "ça", "ız", "İA"}
                : std::vector<std::string>{"ça", "Clip 9", "clip 10", "cz", "İA", "ız"};
        UErrorCode status = U_ZERO_ERROR;
        uloc_setDefault(locale.c_str(), &status);
        // Every thread asks for the language once.
        std::thread([&] {
            for (auto name = names.begin(); name + 1 != names.end(); ++name) {
                EXPECT_LT(Text::localizedStandardCompare(name[0], name[1]), 0) << *name;
                EXPECT_LT(Text::localizedStandardSortKey(name[0]),
                          Text::localizedStandardSortKey(name[1]))
                    << *name;
            }
            EXPECT_EQ(Text::localizedCaseInsensitiveCompare("ÇA", "ça"), 0);
            EXPECT_GT(Text::localizedCaseInsensitiveCompare("Clip 9", "clip 10"), 0);
        }).join();
        uloc_setDefault(machine.c_str(), &status);
    }
}

TEST(Clock, TextsOfMomentsDoNotDependOnTheMachine) {
    const auto moment = Clock::fromIso8601("2026-03-01T02:30:15Z");
    ASSERT_TRUE(moment);
    EXPECT_EQ(Clock::iso8601(*moment + std::chrono::milliseconds(999)), "2026-03-01T02:30:15Z");
    EXPECT_EQ(Clock::databaseText(*moment + std::chrono::microseconds(7999)),
              "2026-03-01 02:30:15.007");
    EXPECT_EQ(Clock::fromDatabaseText("2026-03-01 02:30:15.007"),
              *moment + std::chrono::milliseconds(7));
    EXPECT_EQ(Clock::localText(*moment, "yyyy-MM-dd HHmmss"), "2026-03-01 053015");
    EXPECT_EQ(Clock::localDateTime(*moment), "2026-03-01 05:30:15");
    const Instant beforeTheEpoch = Instant() - std::chrono::microseconds(1);
    EXPECT_EQ(Clock::iso8601(beforeTheEpoch), "1969-12-31T23:59:59Z");
}

TEST(Clock, ReadsDatesStrictly) {
    EXPECT_EQ(Clock::fromIso8601("2026-03-01T08:00:15+05:30"),
              Clock::fromIso8601("2026-03-01T02:30:15Z"));
    EXPECT_EQ(Clock::fromIso8601("2026-02-28T21:30:15-0500"),
              Clock::fromIso8601("2026-03-01T02:30:15Z"));
    for (const auto* text :
         {"", "2026-03-01", "2026-02-30T00:00:00Z", "2026-03-01T24:00:00Z", "2026-03-01T02:30:15",
          "2026-03-01T02:30:15.5Z", "x026-03-01T02:30:15Z", "2026-03-01 02:30:15Z",
          "2026-03-01T-2:30:15Z"})
        EXPECT_FALSE(Clock::fromIso8601(text)) << text;
    for (const auto* text : {"2026-1-01", "2026-13-01", "2026-01-01x", "notes"})
        EXPECT_FALSE(Clock::utcDay(text)) << text;
}

TEST(Numbers, ByteCountsChooseTheirUnit) {
    const std::map<std::int64_t, std::string> cases = {
        {0, "0 bytes"},
        {1, "1 byte"},
        {999, "999 bytes"},
        {1000, "1 KB"},
        {1500, "2 KB"},
        {999'499, "999 KB"},
        {999'500, "1 MB"},
        {1'234'567, "1.2 MB"},
        {999'949'999, "999.9 MB"},
        {999'950'000, "1 GB"},
        {1'234'567'890, "1.23 GB"},
        {5'000'000'000'000, "5 TB"},
        {-1'234'567, "-1.2 MB"},
    };
    for (const auto& [bytes, text] : cases)
        EXPECT_EQ(Numbers::byteCount(bytes), text) << bytes;
}

TEST(Numbers, GroupsByLocaleAndWritesDoublesShortest) {
    EXPECT_EQ(Numbers::grouped(1'234'567, "en_US"), "1,234,567");
    EXPECT_EQ(Numbers::grouped(1'234'567, "tr_TR"), "1.234.567");
    for (const auto* text : {"24.0", "23.976", "0.1", "-3.0", "0.0", "100000.0", "0.0001",
                             "9007199254740991.0", "1e+16", "1.5e-05"})
        EXPECT_EQ(Numbers::shortest(std::strtod(text, nullptr)), text);
}
