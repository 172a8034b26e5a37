#include "Language/L10n.h"
#include "MediaHashList/FolderHashes.h"
#include "MediaHashList/HashedTree.h"
#include "MediaHashList/History.h"
#include "MediaHashList/ListError.h"
#include "MediaHashList/TransferLists.h"
#include "Offload/TreeWalker.h"
#include "Platform/Error.h"
#include "support/Files.h"
#include "support/Process.h"

#include <gmock/gmock.h>

#include <climits>

using namespace slatewise;
using namespace slatewise::MediaHashList;
using namespace slatewise::test;
using ::testing::HasSubstr;

namespace {

const Instant kNoon = Clock::fromIso8601("2026-03-01T12:00:00Z").value();

void expectValid(const std::filesystem::path& file, const std::string& schema) {
    const auto check = run({"xmllint", "--noout", "--nonet", "--schema",
                            std::string(SLATEWISE_SCHEMAS) + "/" + schema, file});
    EXPECT_EQ(check.exitCode, 0) << check.standardError;
}

/// A generation of these files as it is written, with their folders.
Generation generationOf(const std::map<std::string, std::string>& contents,
                        std::vector<HashFormat> formats = {HashFormat::XXH128}) {
    Generation generation;
    generation.creator = {.createdAt = kNoon,
                          .hostName = "cart & <set>",
                          .tool = "Slatewise DIT",
                          .toolVersion = "1",
                          .authors = {{"Ayşe", "DIT"}},
                          .location = "Kadıköy",
                          .comment = {}};
    generation.process = Process::Transfer;
    generation.ignored = {".DS_Store", "ascmhl", "ascmhl/"};
    std::map<std::string, HashedFolder> folders;
    for (const auto format : formats) {
        FolderHashes hashes(format);
        for (const auto& [path, content] : contents)
            hashes.addFile(path, hashOf(format, content));
        for (const auto& [path, value] : hashes.finish()) {
            if (path.empty())
                generation.root.push_back(value);
            else
                folders[path].values.push_back(value);
        }
    }
    for (auto& [path, folder] : folders)
        generation.folders.push_back({path, kNoon, folder.values});
    for (const auto& [path, content] : contents) {
        HashedFile file{path, static_cast<std::int64_t>(content.size()), kNoon, {}};
        for (const auto format : formats)
            file.values.push_back({format, hashOf(format, content), std::nullopt, kNoon});
        generation.files.push_back(file);
    }
    sortInPostOrder(generation);
    return generation;
}

const std::map<std::string, std::string> kExample = {{"CLIP/A001C001.mov", "hello"},
                                                     {"CLIP/A001C002.mov", "b"},
                                                     {"CLIP/sub/x.xml", "side"},
                                                     {"SES/Şarkı ğ.wav", "ses"},
                                                     {"empty.bin", ""}};

std::string listOf(const std::string& hash, const std::string& before = "") {
    return before +
           "<hashlist version=\"2.0\" xmlns=\"urn:ASC:MHL:v2.0\"><processinfo><process>in-place"
           "</process></processinfo><hashes>" +
           hash + "</hashes></hashlist>";
}

} // namespace

TEST(MediaHashListTest, ValuesAreThoseThatOthersCompute) {
    struct Case {
        HashFormat format;
        const char* bytes;
        const char* value;
    };
    const std::string helloC4 = "c447Fm3BJZQ62765jMZJH4m28hrDM7Szbj9CUmj4F4gnvyDYXYz4WfnK2nYRhFvRg"
                                "YEectEXYBYWLDpLo6XGNAfKdt";
    const std::string emptyC4 = "c459dsjfscH38cYeXXYogktxf4Cd9ibshE3BHUo6a58hBXmRQdZrAkZzsWcbWtDg5"
                                "oQstpDuni4Hirj75GEmTc1sFT";
    const Case cases[] = {
        {HashFormat::XXH128, "", "99aa06d3014798d86001c324468d497f"},
        {HashFormat::XXH128, "hello", "b5e9c1ad071b3e7fc779cfaa5e523818"},
        {HashFormat::C4, "hello", helloC4.c_str()},
        {HashFormat::C4, "", emptyC4.c_str()},
        {HashFormat::MD5, "hello", "5d41402abc4b2a76b9719d911017c592"},
        {HashFormat::SHA1, "hello", "aaf4c61ddcc5e8a2dabede0f3b482cd9aea9434d"},
        {HashFormat::XXH64, "", "ef46db3751d8e999"},
        {HashFormat::XXH3, "", "2d06800538d394c2"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(hashOf(each.format, each.bytes), each.value);
        EXPECT_EQ(hashOfList(each.format, {}), hashOf(each.format, ""));
        EXPECT_FALSE(isValue(each.format, std::string(each.value) + "0"));
    }
    EXPECT_EQ(bytesOf(HashFormat::C4, helloC4).substr(0, 4), "\x9b\x71\xd2\x24");
}

TEST(MediaHashListTest, FoldersHaveTheValuesOfTheWorkedExample) {
    FolderHashes hashes(HashFormat::XXH128);
    for (const auto& [path, content] : kExample)
        hashes.addFile(path, hashOf(HashFormat::XXH128, content));
    const auto values = hashes.finish();
    const std::map<std::string, std::pair<std::string, std::string>> expected = {
        {"CLIP/sub", {"304671136f9a6a8ee8556fcf4954674c", "13e35254e07b0bfc4717f78c53e28364"}},
        {"CLIP", {"04a8be66dcf7b6b2ef9df6d2a563c765", "b7379663a88a152dc4d8f756ed397287"}},
        {"SES", {"07608657a41c2ff5d0b6593b2f09d09e", "c268740f102edd290b60347d0e414312"}},
        {"", {"f5b21a5dc3273455c58cb35ea4548555", "82779b69b7686b6392826f593579451b"}},
    };
    ASSERT_EQ(values.size(), expected.size());
    for (const auto& [path, value] : values) {
        EXPECT_EQ(value.content, expected.at(path).first) << path;
        EXPECT_EQ(value.structure, expected.at(path).second) << path;
    }
}

TEST(MediaHashListTest, WhatIsWrittenIsValidAndReadsBackTheSame) {
    std::map<std::string, std::string> many;
    for (int number = 0; number < 20'000; ++number)
        many["D" + std::to_string(number % 7) + "/c" + std::to_string(number)] = "x";
    const std::map<std::string, Generation> cases = {
        {"plain", generationOf({{"a.mov", "a"}})},
        {"nothing", generationOf({})},
        {"example", generationOf(kExample)},
        {"odd names", generationOf({{"a & <b> \"c\"/ d\t\n.mov ", "x"},
                                    {"a.b/c", "y"},
                                    {"a/b", ""},
                                    {"\ufeff\ufeffa/\ufeffb", "with what marks encodings"}})},
        {"all formats", generationOf(kExample, {kHashFormats.begin(), kHashFormats.end()})},
        {"many", generationOf(many)},
    };
    const TemporaryFolder folder;
    for (const auto& [name, generation] : cases) {
        SCOPED_TRACE(name);
        const auto text = writeGeneration(generation);
        EXPECT_EQ(readGeneration(text), generation);
        writeFile(folder / "list.mhl", text);
        expectValid(folder / "list.mhl", "ASCMHL.xsd");
    }
    const auto text = writeGeneration(cases.at("example"));
    EXPECT_LT(text.find(">CLIP/sub/x.xml<"), text.find(">CLIP/sub<"));
    EXPECT_LT(text.find(">CLIP/sub<"), text.find(">CLIP<"));
    EXPECT_LT(text.find(">CLIP<"), text.find(">SES/Şarkı"));
}

TEST(MediaHashListTest, AHistoryGrowsAndSaysWhatEachValueIsToIt) {
    const TemporaryFolder folder;
    const auto root = folder / "A001 ğ\xef\xbf\xbf";
    std::filesystem::create_directory(root);
    const RootFolder handle(root);
    auto older = generationOf({{"bad", "5"}, {"old", "4"}, {"other", "2"}, {"same", "1"}},
                              {HashFormat::MD5});
    older.files.front().values.front().action = HashAction::Failed;
    History(handle).append(older);
    auto history = History::load(handle);
    auto renamed = generationOf({{"moved", "4"}}, {HashFormat::XXH3});
    renamed.files.front().previousPath = "old";
    history.append(renamed);
    history = History::load(handle);
    auto next = generationOf(
        {{"bad", "5"}, {"moved", "4"}, {"new", "3"}, {"other", "changed"}, {"same", "1"}},
        {HashFormat::MD5, HashFormat::XXH128});
    history.judge(next);
    history.append(next);
    history.append(next);
    {
        const auto late = History::toGoOn(handle, {});
        EXPECT_EQ(late.generations().size(), 4U);
        EXPECT_THROW((void)History::toGoOn(handle, {}), PosixError) << "one after the other";
        auto first = older;
        EXPECT_THROW((void)History(handle).append(first), PosixError) << "its name is taken";
    }

    const auto read = History::load(handle);
    ASSERT_EQ(read.generations().size(), 4U);
    EXPECT_EQ(read.generations().back(), next);
    std::map<std::string, std::vector<std::string>> actions;
    for (const auto& file : next.files) {
        for (const auto& value : file.values)
            actions[file.path].emplace_back(rawValue(*value.action));
    }
    EXPECT_THAT(actions["same"], ::testing::ElementsAre("verified", "verified"));
    EXPECT_THAT(actions["other"], ::testing::ElementsAre("failed", "verified"));
    EXPECT_THAT(actions["bad"], ::testing::ElementsAre("original", "original"));
    EXPECT_THAT(actions["moved"], ::testing::ElementsAre("verified", "verified"));
    EXPECT_THAT(actions["new"], ::testing::ElementsAre("original", "original"));
    expectValid(root / "ascmhl/ascmhl_chain.xml", "ASCMHLDirectory.xsd");
    EXPECT_TRUE(std::filesystem::exists(root / "ascmhl/0004_A001 ğ__2026-03-01_120000Z.mhl"));

    writeFile(root / "ascmhl/._0001.mhl", "what another system keeps beside a file");
    EXPECT_NO_THROW((void)History::load(handle));
    const auto stray = root / "ascmhl/0005_late.mhl";
    writeFile(stray, writeGeneration(older));
    EXPECT_THROW((void)History::load(handle), ListError) << "the next would be the fifth, too";
    std::filesystem::remove(stray);
    writeFile(root / "ascmhl/0002_A001 ğ__2026-03-01_120000Z.mhl", writeGeneration(older));
    EXPECT_THROW((void)History::load(handle), ListError) << "not what the chain names";
    int complaints = 0;
    const auto readable =
        History::loadReadable(handle, {}, [&](const auto&, const Error&) { ++complaints; });
    EXPECT_EQ(complaints, 1);
    EXPECT_EQ(readable.generations().size(), 3U);

    const auto longest = folder / std::string(255, 'x');
    std::filesystem::create_directory(longest);
    EXPECT_NO_THROW((void)History(RootFolder(longest)).append(older)) << "a name of its own length";
}

TEST(MediaHashListTest, HistoriesFurtherDownGrowFirstAndAreNamedAbove) {
    const TemporaryFolder folder;
    const auto root = folder / "A001";
    HashedTree tree;
    tree.creator = creatorHere();
    tree.folders = {"CLIP", "CLIP/sub", "SES", "bare"};
    for (const auto& [path, content] : kExample) {
        writeFile(root / path, content);
        tree.files.push_back({path,
                              static_cast<std::int64_t>(content.size()),
                              std::nullopt,
                              {{HashFormat::XXH128, hashOf(HashFormat::XXH128, content), {}, {}}}});
    }
    std::filesystem::create_directory(root / "bare");
    const RootFolder handle(root);
    (void)addGenerations(RootFolder(root / "CLIP"), {}, {}, {});
    const auto nested = foldersWithHistory(TreeWalker::walk(handle, {}));
    EXPECT_THAT(nested, ::testing::ElementsAre("CLIP"));

    const auto added = addGenerations(handle, {}, tree, nested);
    ASSERT_EQ(added.lists.size(), 4U);
    EXPECT_THAT(added.lists[0], ::testing::StartsWith("CLIP/ascmhl/0002_CLIP_"));
    EXPECT_THAT(added.lists[2], ::testing::StartsWith("ascmhl/0001_A001_"));
    for (const auto& list : added.lists)
        expectValid(root / list, list.ends_with(".mhl") ? "ASCMHL.xsd" : "ASCMHLDirectory.xsd");
    const auto inner = History::load(handle, "CLIP").generations().back();
    const auto outer = History::load(handle).generations().back();
    EXPECT_THAT(inner.files, ::testing::SizeIs(3));
    EXPECT_EQ(inner.root.at(0).content, "04a8be66dcf7b6b2ef9df6d2a563c765");
    EXPECT_THAT(outer.files, ::testing::SizeIs(2)) << "what lies further down is not said twice";
    EXPECT_THAT(outer.folders, ::testing::SizeIs(3)) << "CLIP, SES and what is bare";
    EXPECT_EQ(outer.folders.at(0).values.at(0).structure, "b7379663a88a152dc4d8f756ed397287");
    EXPECT_EQ(outer.references,
              (std::vector<Reference>{
                  {added.lists[0], hashOf(HashFormat::C4, readFile(root / added.lists[0]))}}));

    // What lies in the way of the outer list leaves the inner one written, and told.
    const auto outerFolder = root / "ascmhl";
    std::filesystem::rename(outerFolder, root / "aside");
    writeFile(outerFolder, "");
    const auto half = addGenerations(handle, {}, tree, nested);
    EXPECT_TRUE(half.failure);
    EXPECT_THAT(half.lists, ::testing::SizeIs(2));
    std::filesystem::remove(outerFolder);
    std::filesystem::rename(root / "aside", outerFolder);

    // One that came up since the tree was looked through goes on, too.
    EXPECT_THAT(addGenerations(handle, {}, tree, {}).lists.front(),
                ::testing::StartsWith("ascmhl/0002_"));

    tree.unknownFiles = {"SES/new.wav"};
    (void)addGenerations(handle, {}, tree, foldersWithHistory(TreeWalker::walk(handle, {})));
    const auto partly = History::load(handle).generations().back();
    EXPECT_TRUE(partly.root.empty()) << "no folder has a value of which a part is not known";
    EXPECT_THAT(partly.folders, ::testing::SizeIs(2)) << "CLIP and what is bare";
}

TEST(MediaHashListTest, ACopyListsWhatWasProvedAndFailuresThatAreKnown) {
    const TemporaryFolder folder;
    const auto row = [](const char* path, VerifyStatus status) {
        const HashValues card = {{HashFormat::XXH128, hashOf(HashFormat::XXH128, "card")}};
        const HashValues disk = {{HashFormat::MD5, hashOf(HashFormat::MD5, "disk")},
                                 {HashFormat::XXH128, hashOf(HashFormat::XXH128, "disk")}};
        FileCopyResult result;
        result.relativePath = path;
        result.action = status == VerifyStatus::Verified ? RowAction::Copy : RowAction::Fail;
        result.verifyStatus = status;
        result.further = FurtherHashes{card, {}, kNoon};
        if (status == VerifyStatus::Mismatch)
            result.further.edit().readBack = disk;
        return result;
    };
    for (const auto* const side : {"card", "disk"}) {
        std::filesystem::create_directory(folder / side);
        HashedTree tree;
        tree.files = {{"known",
                       4,
                       kNoon,
                       {{HashFormat::XXH128, hashOf(HashFormat::XXH128, "card"), {}, {}}}}};
        (void)addGenerations(RootFolder(folder / side), {}, tree, {});
        writeFile(folder / side / "known", "card");
    }
    writeFile(folder / "card/CLIP/new", "card");
    const RootFolder card(folder / "card");
    const RootFolder disk(folder / "disk");
    OffloadSettings settings;
    settings.listRole = "DIT\x1b";
    TransferLists lists{settings};
    auto entries = TreeWalker::walk(card, {});
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(TransferLists(settings).readHistories(card, entries, stop.get_token()),
                 CancellationError)
        << "and not told as a list that cannot be read";
    lists.readHistories(card, entries);
    OffloadOutcome outcome;
    outcome.files = {row("good", VerifyStatus::Verified), row("known", VerifyStatus::Mismatch),
                     row("not/known", VerifyStatus::Mismatch),
                     row("not/read back", VerifyStatus::Failed)};
    const auto told = lists.differences(outcome);
    EXPECT_EQ(told,
              (std::vector<OffloadProblem>{{OffloadProblem::Kind::CardFileNotListed, "CLIP/new"}}));
    EXPECT_EQ(told.at(0).severity(), OffloadProblem::Severity::Note);
    EXPECT_EQ(lists.write(disk, {}, outcome).lists.size(), 2U);
    const auto newest = History::load(disk).generations().back();
    ASSERT_EQ(newest.files.size(), 2U);
    EXPECT_EQ(newest.creator.authors, (std::vector<Author>{{"", "DIT\xef\xbf\xbd"}}));
    EXPECT_EQ(newest.files[0].path, "good");
    EXPECT_EQ(newest.files[1].values[0].action, HashAction::Verified) << "of a new format";
    EXPECT_EQ(newest.files[1].values[1].action, HashAction::Failed);
    EXPECT_TRUE(newest.root.empty()) << "not all that lies there was proved";

    outcome.files = {row("good", VerifyStatus::CopiedUnverified)};
    EXPECT_TRUE(lists.write(disk, {}, outcome).lists.empty()) << "nothing was proved";

    writeFile(folder / "card/ascmhl/ascmhl_chain.xml", "<");
    TransferLists damaged{settings};
    damaged.readHistories(card, entries);
    const auto unread = damaged.differences(outcome);
    ASSERT_EQ(unread.size(), 1U) << "nobody knows what it would name";
    for (const L10n l10n : {L10n(AppLanguage::English), L10n(AppLanguage::Turkish)})
        EXPECT_THAT(unread[0].reason.in(l10n), HasSubstr(std::string(l10n.notAHashList())));
}

TEST(MediaHashListTest, RefusesWhatIsNoListOrWouldDoHarm) {
    const std::string bomb = "<!DOCTYPE x [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;\">]>";
    const auto hash = [](const std::string& path, const std::string& value) {
        return "<hash><path>" + path + "</path>" + value + "</hash>";
    };
    const std::string good = "<md5>5d41402abc4b2a76b9719d911017c592</md5>";
    const std::string odd = "<directoryhash><path>a</path><x><path>/</path></x></directoryhash>";
    EXPECT_NO_THROW((void)readGeneration(listOf(hash("a/b", good) + odd)));
    std::vector<std::string> bad = {"", "{}", "<hashlist/>", listOf(hash("a", good), bomb),
                                    listOf(hash("a", good)).substr(0, 200)};
    for (const auto* path : {"../a", "a/../../b", "/etc/passwd", ""})
        bad.push_back(listOf(hash(path, good)));
    for (const auto* value : {"<md5>12</md5>", "<c4>c4</c4>"})
        bad.push_back(listOf(hash("a", value)));
    for (const auto& text : bad)
        EXPECT_THROW((void)readGeneration(text), Error) << text;
    EXPECT_THROW((void)readGeneration(listOf(hash("a", good)) + "<<<"), Error) << "behind its end";
    EXPECT_THROW((void)readChain("<ascmhldirectory xmlns=\"urn:ASC:MHL:DIRECTORY:v2.0\"><hashlist "
                                 "sequencenr=\"1\"><path>../x.mhl</path></hashlist>"
                                 "</ascmhldirectory>"),
                 Error);
    // What would take minutes to read, or to hold against a card.
    const auto withMany = [&](int count) {
        std::string attributes;
        for (int number = 0; number < count; ++number)
            attributes += " a" + std::to_string(number) + " = '>'";
        return listOf("<hash" + attributes + hash("a", good).substr(5));
    };
    EXPECT_NO_THROW((void)readGeneration(withMany(1'000)));
    EXPECT_THROW((void)readGeneration(withMany(1'001)), ListError);
    const auto readNested = [&](int levels, bool isInText) {
        std::string held;
        while (levels-- > 0)
            held = "<a xmlns:b=\"c\">" + held + "</a>";
        const auto path = "<previousPath>b" + held + "</previousPath>";
        (void)readGeneration(listOf(isInText ? hash("a", good + path) : held));
    };
    for (const bool isInText : {false, true}) {
        EXPECT_NO_THROW(readNested(60, isInText));
        EXPECT_THROW(readNested(70, isInText), ListError);
    }
    Generation ignoring;
    ignoring.ignored.resize(10'000, "*x");
    EXPECT_NO_THROW((void)readGeneration(writeGeneration(ignoring)));
    ignoring.ignored.emplace_back("*x");
    EXPECT_THROW((void)readGeneration(writeGeneration(ignoring)), ListError);
    const std::string c4 = hashOf(HashFormat::C4, "");
    EXPECT_EQ(readChain(writeChain({{2, "2.mhl", c4}, {1, "1.mhl", c4}})).front().number, 1);
    const std::pair<int, int> numbers[] = {{1, 1}, {1, 3}, {2, 3}, {0, 1}, {1, INT_MAX}};
    for (const auto& [one, other] : numbers)
        EXPECT_THROW((void)readChain(writeChain({{one, "1.mhl", c4}, {other, "2.mhl", c4}})),
                     ListError)
            << one << " " << other;
    for (const auto* const name : {"a\rb", "\x01", "bad \xff", "\xef\xbf\xbf"})
        EXPECT_FALSE(canHold(name)) << name;
}
