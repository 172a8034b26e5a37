#include "VerifyProgram.h"

#include "MediaHashList/HashedTree.h"
#include "Offload/TreeWalker.h"
#include "Platform/Desktop/UserDefaults.h"
#include "Verify/TreeCheck.h"
#include "support/MappedFile.h"

// Hash lists that an offload leaves beside a copy, and what it makes of those that a card brings.

using namespace slatewise;
using namespace slatewise::test;
using ::testing::HasSubstr;

namespace {

/// Gives a folder of a card a generation as somebody else's tool would have written it.
void addList(const std::filesystem::path& root, const std::vector<HashFormat>& formats) {
    const RootFolder handle(root);
    const auto entries = TreeWalker::walk(handle, {});
    MediaHashList::HashedTree tree;
    tree.creator = MediaHashList::creatorHere();
    for (const auto& entry : entries) {
        if (entry.isDirectory)
            continue;
        MediaHashList::HashedFile file{entry.relativePath, entry.sizeBytes, entry.mtime, {}};
        for (const auto format : formats)
            file.values.push_back(
                {format, hashOf(format, readFile(root / entry.relativePath)), {}, {}});
        tree.files.push_back(file);
    }
    (void)addGenerations(handle, {}, tree, MediaHashList::foldersWithHistory(entries));
}

/// All lists of a tree are what their schemas say.
void expectValidLists(const std::filesystem::path& root) {
    for (const auto& item : std::filesystem::recursive_directory_iterator(root)) {
        if (!item.is_regular_file() || item.path().parent_path().filename() != "ascmhl")
            continue;
        const auto* const schema =
            item.path().extension() == ".mhl" ? "ASCMHL.xsd" : "ASCMHLDirectory.xsd";
        const auto check = run({"xmllint", "--noout", "--nonet", "--schema",
                                std::string(SLATEWISE_SCHEMAS) + "/" + schema, item.path()});
        EXPECT_EQ(check.exitCode, 0) << check.standardError;
    }
}

/// "path format action" for every value of a generation.
std::vector<std::string> actionsOf(const MediaHashList::Generation& generation) {
    std::vector<std::string> actions;
    for (const auto& file : generation.files) {
        for (const auto& value : file.values)
            actions.push_back(file.path + " " + std::string(rawValue(value.format)) + " " +
                              std::string(value.action ? rawValue(*value.action) : ""));
    }
    return actions;
}

} // namespace

TEST_F(VerifyProgram, ACopyBringsAValidListThatGoesOnWhereTheCardsEnds) {
    using enum HashFormat;
    const auto card = folder / "A001";
    struct Case {
        const char* name;
        std::function<void()> prepare;
        std::size_t generations;
        /// Some of what the newest says.
        std::vector<std::string> says;
    };
    const auto list = [&](std::vector<HashFormat> formats) {
        return [&card, formats] {
            addList(card, formats);
        };
    };
    const Case cases[] = {
        {"plain", [] {}, 1, {"a.dat xxh128 original"}},
        {"nested folders, Turkish and odd names, empty ones",
         [&] {
             writeFile(card / "CLIP/ğ & <ş>/\"x\".snd", "w");
             writeFile(card / "CLIP/line\nend", "");
             writeFile(card / "CLIP/ascmhl", "no folder of lists");
             std::filesystem::create_directories(card / "bare/bare");
         },
         1,
         {"CLIP/ğ & <ş>/\"x\".snd xxh128 original", "CLIP/line\nend xxh128 original",
          "CLIP/ascmhl xxh128 original"}},
        {"only what is skipped",
         [&] {
             std::filesystem::remove(card / "a.dat");
             writeFile(card / ".DS_Store", "x");
         },
         1,
         {}},
        {"a history of one generation", list({XXH128}), 2, {"a.dat xxh128 verified"}},
        {"a history of another system, with names in another form",
         [&] {
             writeFile(card / "CLIP/\u015f.snd", "s");
             addList(card, {XXH128});
             std::filesystem::rename(card / "CLIP/\u015f.snd", card / "CLIP/s\u0327.snd");
         },
         2,
         {"CLIP/s\u0327.snd xxh128 verified"}},
        {"of what is skipped, too",
         [&] {
             writeFile(card / "._a.dat", "x");
             addList(card, {XXH128});
         },
         2,
         {"a.dat xxh128 verified"}},
        {"of three, in many formats",
         [&] {
             addList(card, {MD5, XXH64});
             addList(card, {SHA1});
             addList(card, {C4, MD5});
             writeFile(card / "new", "later");
         },
         4,
         {"a.dat c4 verified", "a.dat md5 verified", "a.dat sha1 verified", "a.dat xxh128 verified",
          "a.dat xxh64 verified", "new xxh128 original"}},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        std::filesystem::remove_all(card);
        writeFile(card / "a.dat", bytesOf(1'234'567));
        each.prepare();
        const auto root = offload("--mhl");
        expectValidLists(root);
        const RootFolder handle(root);
        const auto history = History::load(handle);
        ASSERT_EQ(history.generations().size(), each.generations);
        const auto& newest = history.generations().back();
        EXPECT_EQ(newest.process, MediaHashList::Process::Transfer);
        EXPECT_EQ(newest.root.size(), 1U);
        EXPECT_THAT(actionsOf(newest), ::testing::IsSupersetOf(each.says));
        EXPECT_EQ(program("slatewise-verify", {root}).exitCode, each.says.empty() ? 1 : 0)
            << "where there is nothing to compare, nothing is the same";
        const auto sums = run({"sh", "-c",
                               "cd \"$0\" && { test ! -s \"$1\" || sha256sum --quiet "
                               "-c \"$1\"; }",
                               root, reports / "checksums.sha256"});
        EXPECT_EQ(sums.exitCode, 0) << sums.standardError;
    }
}

TEST_F(VerifyProgram, ACardThatIsNotWhatItsOwnListsSayFails) {
    const auto card = folder / "A001";
    struct Case {
        const char* name;
        std::function<void()> spoil;
        std::string told;
        /// What the newest list of the copy says; empty: it has none of ours.
        std::vector<std::string> says{};
        std::vector<std::string> nestedSays{};
        /// What the manifest holds.
        std::string reported = "\"problems\"";
        std::string option = "--mhl";
        int exitCode = 1;
    };
    const Case cases[] = {
        {"changed",
         [&] { writeFile(card / "CLIP/b.snd", "B"); },
         "CLIP/b.snd on the card is not what",
         {"a.dat md5 verified", "a.dat xxh128 verified"},
         {"b.snd md5 failed", "b.snd sha1 failed", "b.snd xxh128 verified"}},
        {.name = "changed, and no list is wanted",
         .spoil = [&] { writeFile(card / "CLIP/b.snd", "B"); },
         .told = "CLIP/b.snd on the card is not what",
         .option = "--no-mhl"},
        {.name = "a damaged list, and none is wanted",
         .spoil = [&] { writeFile(card / "CLIP/ascmhl/ascmhl_chain.xml", "<"); },
         .told = "so the card was not held against it",
         .option = "--no-mhl",
         .exitCode = 0},
        {"missing",
         [&] { std::filesystem::remove(card / "CLIP/b.snd"); },
         "CLIP/b.snd is in the card's own hash list, but not on the card",
         {"a.dat md5 verified", "a.dat xxh128 verified"}},
        {"missing, and many that are not listed",
         [&] {
             std::filesystem::remove(card / "CLIP/b.snd");
             for (int number = 0; number < 25; ++number)
                 writeFile(card / ("new" + std::to_string(number)), "x");
         },
         "And 18 more notes",
         {},
         {},
         "5 more files are on the card, but not in the card's own hash list"},
        {"a folder in its place",
         [&] {
             std::filesystem::remove(card / "CLIP/b.snd");
             writeFile(card / "CLIP/b.snd/x", "x");
         },
         "CLIP/b.snd is in the card's own hash list, but not on the card"},
        {"another history below",
         [&] {
             std::filesystem::remove_all(card / "CLIP/ascmhl");
             addList(card / "CLIP", {HashFormat::SHA1});
         },
         "refers to"},
        {"a value that failed",
         [&] {
             std::filesystem::remove_all(card / "ascmhl");
             Generation bad;
             bad.files = {{"a.dat", 1, {}, {}}};
             (void)History(RootFolder(card)).append(bad);
         },
         "has no value that proves a.dat"},
        {"a listed file in a folder that is named as a history is",
         [&] {
             writeFile(card / "DCIM/ascmhl/x.dat", "x");
             std::filesystem::remove_all(card / "ascmhl");
             Generation other;
             other.files = {
                 {"DCIM/ascmhl/x.dat", 1, {}, {{HashFormat::MD5, std::string(32, '0'), {}, {}}}}};
             (void)History(RootFolder(card)).append(other);
         },
         "has no value that proves DCIM/ascmhl/x.dat"},
        {"a damaged list", [&] { writeFile(card / "CLIP/ascmhl/ascmhl_chain.xml", "<"); },
         "could not be read"},
        {"a list that its chain does not name",
         [&] { writeFile(card / "CLIP/ascmhl/0002_late.mhl", ""); }, "could not be read"},
        {"a list without its chain",
         [&] { std::filesystem::remove(card / "ascmhl/ascmhl_chain.xml"); }, "could not be read"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        std::filesystem::remove_all(card);
        writeFile(card / "a.dat", "a");
        writeFile(card / "CLIP/b.snd", "b");
        addList(card / "CLIP", {HashFormat::SHA1});
        addList(card, {HashFormat::MD5});
        each.spoil();
        const auto root = offload(each.option, each.exitCode);
        EXPECT_THAT(told, HasSubstr(each.told));
        const bool isListRead =
            each.exitCode != 0 && each.told != "could not be read" && each.told != "refers to";
        const auto* advice = isListRead ? "It is not what its own list says: ask whoever"
                                        : "mend the cause and start again";
        if (each.exitCode != 0) {
            EXPECT_THAT(told, HasSubstr(advice));
        }
        const auto hashed =
            program("slatewise-offload", {"--mhl", "--hash-only", "--quiet", card.native()});
        EXPECT_THAT(hashed.standardError, HasSubstr(advice));
        EXPECT_THAT(readFile(reports / "manifest.json"), HasSubstr(each.reported));
        const std::string otherwise = each.option == "--mhl" ? "ascmhl" : "nothing";
        EXPECT_EQ(run({"diff", "-r", "-x", otherwise, card, root}).exitCode, 0)
            << "all of it is there, and proved";
        if (each.says.empty())
            continue;
        expectValidLists(root);
        const RootFolder handle(root);
        EXPECT_EQ(actionsOf(History::load(handle).generations().back()), each.says)
            << "the nested file is in its own list";
        const auto nested = actionsOf(History::load(handle, "CLIP").generations().back());
        EXPECT_EQ(nested, each.nestedSays);
    }
}

TEST_F(VerifyProgram, WhatARunLeftOutOfACopyIsNotMissedThere) {
    const auto card = folder / "A001";
    writeFile(card / ".Trashes/x", "x");
    writeFile(card / "PROXY/y.dat", "y");
    addList(card / "PROXY", {HashFormat::MD5});
    addList(card, {HashFormat::MD5});
    const auto root = offload("--exclude=PROXY");
    // The generation that is added gives up what every system leaves behind.
    for (const auto* const note :
         {"(2): PROXY/ascmhl/0002_PROXY_", "(1): PROXY/ascmhl/0002_PROXY_"}) {
        const auto result = program("slatewise-verify", {"--quiet", "--mhl", root});
        EXPECT_EQ(result.exitCode, 0) << result.standardOutput;
        EXPECT_THAT(result.standardError, HasSubstr(note));
    }
    // Whoever made a list later has found there what it names.
    writeFile(root / "PROXY/y.dat", "y");
    addList(root, {HashFormat::MD5});
    for (const auto* const name : {"CLIP/a.dat", "PROXY/y.dat"})
        std::filesystem::remove(root / name);
    EXPECT_EQ(program("slatewise-verify", {"--quiet", root}).standardOutput,
              "missing\tCLIP/a.dat\nmissing\tPROXY/y.dat\n");
}

TEST_F(VerifyProgram, AListWhoseWriterWasKilledIsEnteredOnceItIsProvedAgain) {
    const auto tree = folder / "tree";
    const auto chain = tree / "ascmhl/ascmhl_chain.xml";
    writeFile(tree / "a.dat", "a");
    addList(tree, {HashFormat::MD5});
    const auto verify = [&](std::vector<std::string> words, const std::filesystem::path& path) {
        words.push_back(path);
        return program("slatewise-verify", words);
    };
    for (const std::size_t generations : {1U, 2U}) {
        // As a kill leaves it: the list is there, and the chain is that of before.
        auto links = MediaHashList::readChain(readFile(chain));
        ASSERT_EQ(links.size(), generations);
        const auto list = tree / "ascmhl" / links.back().fileName;
        links.pop_back();
        if (links.empty())
            std::filesystem::remove(chain);
        else
            writeFile(chain, MediaHashList::writeChain(links));
        const auto damaged = verify({"--quiet"}, tree);
        EXPECT_EQ(damaged.standardOutput, "damaged\t" + list.native() + "\n");
        EXPECT_THAT(damaged.standardError, HasSubstr("--mhl reads the files again"));
        writeFile(tree / "a.dat", "b");
        const auto changed = verify({"--quiet", "--mhl"}, tree);
        EXPECT_EQ(changed.standardOutput, "changed\ta.dat\ndamaged\t" + list.native() + "\n");
        writeFile(tree / "a.dat", "a");
        const auto entered = verify({"--quiet", "--mhl"}, tree);
        EXPECT_EQ(entered.exitCode, 0) << entered.standardOutput << entered.standardError;
        EXPECT_EQ(History::load(RootFolder(tree)).generations().size(), generations + 1);
    }
    // What an offload left in that way is none of what it proved.
    const auto root = offload("--mhl");
    std::filesystem::remove(root / "ascmhl/ascmhl_chain.xml");
    for (const auto* const option : {"--quiet", "--mhl"}) {
        const auto refused = verify({option}, root);
        EXPECT_EQ(refused.exitCode, 1);
        EXPECT_THAT(refused.standardError, HasSubstr("copy the card again"));
    }
}

TEST_F(VerifyProgram, AGenerationSaysWhatItCouldNotHold) {
    {
        OffloadSettings settings;
        settings.listAuthor = "Ayşe";
        settings.listRole = "DIT";
        settings.listLocation = "Set 3";
        UserDefaults defaults(folder / "user/config/Slatewise DIT/settings.ini");
        settings.save(defaults);
    }
    const auto root = offload();
    const auto first = program("slatewise-verify", {"--mhl", root});
    EXPECT_EQ(first.exitCode, 0);
    EXPECT_THAT(first.standardError, HasSubstr("cannot hold its name: bad \xef\xbf\xbd"));
    const auto creator = History::load(RootFolder(root)).generations().front().creator;
    EXPECT_EQ(creator.authors, (std::vector<MediaHashList::Author>{{"Ayşe", "DIT"}}));
    EXPECT_EQ(creator.location, "Set 3");
    const MappedFile mapped(root / "CLIP/a.dat", 2'000'001);
    const auto second = program("slatewise-verify", {"--mhl", "--quiet", root});
    EXPECT_EQ(second.exitCode, 0);
    EXPECT_THAT(second.standardError, HasSubstr("may come from there (1): CLIP/a.dat"));
    const auto counted =
        run({"sh", "-c", "cat \"$0\"/ascmhl/0002_*.mhl | grep -c 'verified'", root});
    EXPECT_EQ(counted.standardOutput, "3\n");

    // As a card, it brings lists that grow again.
    std::filesystem::remove_all(folder / "A001");
    std::filesystem::rename(root, folder / "A001");
    const auto again = offload();
    EXPECT_THAT(told, HasSubstr("but not in the card's own hash list"));
    // Checksums of the folder that they lie in are one of its files from then on.
    const auto sums = folder / "sums";
    writeFile(sums / "a", "hello");
    writeFile(sums / "checksums.sha256", hashOf(HashFormat::SHA256, "hello") + "  ./a\r\n");
    writeFile(sums / "ascmhl/._0001.mhl", "what another system left");
    const auto read = Verify::check(Verify::findLists(sums), Verify::Keep::Tree, {}, {});
    EXPECT_EQ(read.bytesRead, 5) << "of the footage";
    for (const auto& each : {again, sums}) {
        for (const auto* const words : {"--mhl", "--quiet"})
            EXPECT_EQ(program("slatewise-verify", {words, each}).exitCode, 0) << words;
    }
    writeFile(sums / "checksums.sha256", "");
    EXPECT_EQ(program("slatewise-verify", {"--quiet", sums}).standardOutput,
              "changed\tchecksums.sha256\n");
}
