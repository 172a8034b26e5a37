#include "MediaHashList/IgnorePatterns.h"

#include <gmock/gmock.h>

using namespace slatewise;
using namespace slatewise::MediaHashList;
using namespace ::testing;

TEST(IgnorePatterns, SayWhatIsLeftOut) {
    struct Case {
        std::vector<std::string> patterns;
        std::string path;
        bool isIgnored;
    };
    const Case cases[] = {
        {{".DS_Store"}, "a/.DS_Store", true},
        {{"tmp/"}, "a/tmp/b", true},
        {{"/tmp"}, "a/tmp", false},
        {{"/tmp"}, "tmp/a", true},
        {{"a/*.bak"}, "a/b.bak", true},
        {{"a/*.bak"}, "b.bak", false},
        {{"*.bak"}, "a/b.bak", true},
        {{"!*.bak"}, "a/b.bak", false},
        {{"ascmhl"}, "a/ascmhl2", false},
        {{"._*"}, "a/._b", true},
        {{"**/b"}, "b", true},
        {{"**/b/c"}, "a/a/b/c", true},
        {{"a/**"}, "a", false},
        {{"a/**"}, "a/b/c", true},
        {{"a/**/b"}, "a/b", true},
        {{"a/**/b"}, "a/c/d/b", true},
        {{"a/**/**/b"}, "a/b", true},
        {{"a/**/**"}, "a", false},
        {{"a/**/**"}, "a/b", true},
        {{"a/**/b"}, "c/b", false},
        {{"/"}, "a", false},
        {{"tmp/"}, "a/tmp", false},
        {{"*.bak", "!a.bak"}, "x/a.bak", false},
        {{"!a.bak", "*.bak"}, "x/a.bak", true},
        {{"x/", "!a.bak", "/b"}, "x/a.bak", false},
        {{"a*b*c"}, "aXbYc", true},
        {{"a*b*c"}, "ab\xff", false},
        {{"*.b?k"}, "x.bak", true},
        {{"**/b*/c"}, "a/b/bb/c", true},
        {{"#a"}, "#a", false},
        {{"a  "}, "a", true},
    };
    for (const auto& each : cases)
        EXPECT_EQ(IgnoreList(each.patterns).ignores(each.path), each.isIgnored)
            << each.patterns.front() << " " << each.path;
    for (const std::string name : {"a*b", "#x", "!x", "x ", "[x]", "back\\slash"})
        EXPECT_TRUE(IgnoreList(ignorePatterns({name})).ignores(name)) << name;
    EXPECT_FALSE(IgnoreList(ignorePatterns({"a*b"})).ignores("acb"));
    IgnoreLists nested({{"", {"*.tmp", "x", "left"}}, {"a/b", {"!*.tmp"}}, {"left", {"*.bak"}}});
    const std::pair<const char*, bool> below[] = {
        {"a/1.tmp", true},   {"a/b/1.tmp", false}, {"a/b/x/y", true}, {"a/bc/1.tmp", true},
        {"left/new", false}, {"left/1.bak", true}, {"z", false}};
    for (const auto& [path, isIgnored] : below)
        EXPECT_EQ(nested.ignores(path), isIgnored) << path;
}
