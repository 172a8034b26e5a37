#include "Offload/CopyEngineTest.h"

#include <fcntl.h>
#include <gmock/gmock.h>

#include <cstdio>
#include <tuple>
#include <utility>

// What becomes of card and copies while a run is at work.

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

TEST_F(CopyEngineTest, WhatChangesOnTheCardMeanwhileIsNotVerified) {
    const auto film = card / "DCIM/a";
    const auto replace = [&] {
        writeFile(card / "other", "CONTENT");
        std::filesystem::rename(card / "other", film);
    };
    const Problems changed = {"This file changed while the card was read: DCIM/a"};
    const Problems came = {"This file came while the card was read and is missing here: DCIM/c"};
    const std::tuple<const char*, std::function<void()>, Problems> cases[] = {
        {"rewritten", [&] { writeFile(film, "CONTENT"); }, changed},
        {"replaced", replace, changed},
        {"truncated", [&] { std::filesystem::resize_file(film, 3); }, changed},
        {"removed", [&] { std::filesystem::remove(film); }, changed},
        {"added", [&] { writeFile(card / "DCIM/c", "new"); }, came},
        {"added by the system", [&] { writeFile(card / ".DS_Store", "x"); }, {}},
    };
    for (const auto& [what, happens, problems] : cases) {
        for (const bool isHashing : {false, true}) {
            SCOPED_TRACE(std::string(what) + (isHashing ? ", hashing" : ""));
            std::filesystem::remove_all(card / "DCIM");
            for (const auto& name : {film, card / "DCIM/b"}) {
                writeFile(name, "content");
                std::filesystem::last_write_time(
                    name, std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
            }
            record = {};
            request.settings.verifyOnly = isHashing;
            auto observer = record.observer(atFirst<Phase::Verifying>(happens));
            // How a file went is told at its end.
            if (isHashing)
                observer.log = [&, happens = happens, isDone = false](const auto&) mutable {
                    if (!std::exchange(isDone, true))
                        happens();
                };
            const auto outcome = CopyEngine::run(request, observer, {});
            EXPECT_EQ(outcome.status == OutcomeStatus::Failed, !problems.empty());
            EXPECT_EQ(record.problems, problems);
        }
    }
}

TEST_F(CopyEngineTest, WhatWasExchangedWhileItWasReadAndPutBackIsNotVerified) {
    const TemporaryFolder aside;
    writeFile(card / "DCIM/a", "content");
    writeFile(aside / "other/a", "CONTENT");
    // Both may have been written in one tick of the clock.
    std::filesystem::last_write_time(
        aside / "other/a", std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    const auto exchange = [&](const char* in, const char* out) {
        std::filesystem::rename(card / "DCIM", aside / out);
        std::filesystem::rename(aside / in, card / "DCIM");
    };
    for (const bool isHashing : {false, true}) {
        record = {};
        request.settings.verifyOnly = isHashing;
        request.planFormats = [&](const auto&...) {
            exchange("other", "card's");
            return CopyEngine::Request::FormatsOf();
        };
        bool isPutBack = false;
        const auto putBack = [&] {
            if (!std::exchange(isPutBack, true))
                exchange("card's", "other");
        };
        auto observer = record.observer(atFirst<Phase::Verifying>(putBack));
        if (isHashing)
            observer.log = [&](const auto&) {
                putBack();
            };
        EXPECT_EQ(CopyEngine::run(request, observer, {}).status, OutcomeStatus::Failed);
        EXPECT_EQ(record.problems, Problems{"This file changed while the card was read: DCIM/a"});
    }
}

TEST_F(CopyEngineTest, WhatBecomesOfCopiesMeanwhileIsSeen) {
    const auto session = destination / "session";
    const auto rewriteWithItsDate = [&](const char* content) {
        const auto date = std::filesystem::last_write_time(session / "DCIM/a");
        writeFile(session / "DCIM/a", content);
        std::filesystem::last_write_time(session / "DCIM/a", date);
        touchRights(session / "DCIM/a"); // all of it may have been in one tick of the clock
    };
    const auto moveSessionAway = [&] {
        std::filesystem::rename(session, destination / "moved");
        std::filesystem::copy(destination / "moved", session,
                              std::filesystem::copy_options::recursive);
    };
    const auto exchangeFolder = [&] {
        // In one step: the others may be being read.
        EXPECT_EQ(::renameat2(AT_FDCWD, (session / "DCIM").c_str(), AT_FDCWD,
                              (destination / "other").c_str(), RENAME_EXCHANGE),
                  0);
    };
    const std::string differs = "The copy of DCIM/a differs from the card.";
    const std::string isElsewhere = "The copy of DCIM/a is no longer where it was written.";
    // Done when the first file is to be read back or when it was. An empty sentence: nothing is
    // wrong.
    const std::tuple<const char*, std::function<void()>, std::string> cases[] = {
        {"DCIM/b", [&] { rewriteWithItsDate("CONTENT"); }, differs},
        {"DCIM/b", [&] { rewriteWithItsDate("content"); }, ""},
        {"DCIM/a", [&] { std::filesystem::remove(session / "DCIM/b"); },
         "The copy of DCIM/b could not be read back: "},
        {"DCIM/b", [&] { std::filesystem::remove(session / "DCIM/a"); }, isElsewhere},
        {"DCIM/b", [&] { writeFile(session / "DCIM/a", "longer than it was"); }, isElsewhere},
        {"DCIM/b", [&] { writeFile(session / "DCIM/a", "CONTENT"); }, differs},
        {"DCIM/b", moveSessionAway,
         "The copy of " + session.native() + " is no longer where it was written."},
        {"DCIM/b", exchangeFolder, differs},
    };
    const auto before = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
    for (const auto* name : {"a", "b", "c"}) {
        writeFile(card / "DCIM" / name, "content");
        // Of the same dates as the copies, and written before them.
        writeFile(destination / "other" / name, *name == 'a' ? "CONTENT" : "content");
        std::filesystem::last_write_time(card / "DCIM" / name, before);
        std::filesystem::last_write_time(destination / "other" / name, before);
    }
    for (const auto& [file, happens, problem] : cases) {
        SCOPED_TRACE(problem);
        for (const auto* name : {"session", "moved"})
            std::filesystem::remove_all(destination / name);
        record = {};
        const auto outcome = run(atFirst<Phase::Verifying>(happens, file));
        EXPECT_EQ(outcome.status == OutcomeStatus::Failed, !problem.empty());
        // What was copied only now may not be on the disk when it is read back.
        EXPECT_THAT(record.problems, problem.empty()
                                         ? Matcher<Problems>(IsEmpty())
                                         : Matcher<Problems>(Contains(HasSubstr(problem))));
        if (!std::filesystem::exists(destination / "moved")) {
            EXPECT_EQ(verdicts(outcome)["DCIM/c"], "COPY/verified");
        }
    }
}
