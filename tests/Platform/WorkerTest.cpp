#include "Platform/Worker.h"

#include "Platform/Error.h"
#include "Platform/ProcessEnd.h"

#include <gtest/gtest.h>

#include <QThread>

#include <latch>
#include <thread>

using namespace slatewise;

namespace {

/// Tells on which thread it was destroyed.
struct Witness {
    explicit Witness(std::thread::id& destroyedOn_) : destroyedOn(&destroyedOn_) {}
    Witness(Witness&& other) noexcept : destroyedOn(std::exchange(other.destroyedOn, nullptr)) {}
    ~Witness() {
        if (destroyedOn)
            *destroyedOn = std::this_thread::get_id();
    }
    std::thread::id* destroyedOn;
};

/// Knows where it was made, so that a copy of its bytes alone is seen.
struct Anchored {
    Anchored() = default;
    Anchored(const Anchored&) {}
    ~Anchored() { EXPECT_EQ(self, this); }
    const Anchored* self = this;
};

QCoro::Task<bool> captureEverything() {
    const Anchored anchored;
    const std::string shortText = "inside";
    const auto looking =
        onWorker([=] { return anchored.self == &anchored && shortText == "inside"; });
    co_return co_await looking;
}

QCoro::Task<std::string> storyOn(std::thread::id here, std::vector<std::string>& story) {
    const auto asking = onWorker([here] {
        return std::make_unique<std::string>(std::this_thread::get_id() == here ? "same" : "other");
    });
    const auto word = co_await asking;
    story.push_back(*word);
    try {
        const auto failing = onWorker([] { throw PosixError("read", "/card", EIO); });
        co_await failing;
    } catch (const PosixError& failure) {
        story.push_back(std::to_string(failure.code() == EIO));
    }
    story.push_back(std::this_thread::get_id() == here ? "back" : "lost");
    co_return std::string("end");
}

} // namespace

TEST(ProcessEnd, IsSaidInAShortLineThatActsOnNoTerminal) {
    const auto end = [] {
        sayWhatEndsIt("program");
        try {
            // With the last character that has room to end in it.
            throw std::runtime_error("a\x1b[2J\x7f\n" + std::string(392, 'b') + "öö");
        } catch (const std::exception&) {
            std::terminate();
        }
    };
    EXPECT_EXIT(end(), ::testing::ExitedWithCode(1), "program: ended by a\\?\\[2J\\?\\?b+ö…\n");
}

TEST(Worker, ResultsAndFailuresComeBackToTheAwaitersThread) {
    std::vector<std::string> story;
    const auto here = std::this_thread::get_id();
    EXPECT_EQ(QCoro::waitFor(storyOn(here, story)), "end");
    EXPECT_EQ(story, (std::vector<std::string>{"other", "1", "back"}));
}

TEST(Worker, WhatTheWorkHeldIsDestroyedThere) {
    std::thread::id destroyedOn;
    std::thread::id workedOn;
    const auto work = onWorker(
        [witness = Witness(destroyedOn), &workedOn] { workedOn = std::this_thread::get_id(); });
    QCoro::waitFor(work);
    EXPECT_EQ(destroyedOn, workedOn);
    EXPECT_NE(destroyedOn, std::this_thread::get_id());
}

TEST(Worker, WhatTheWorkHoldsIsWholeAndDestroyedAsOften) {
    EXPECT_TRUE(QCoro::waitFor(captureEverything()));
}

TEST(Worker, LongWorkHoldsUpNothingElse) {
    constexpr int kMoreThanProcessors = 64;
    std::latch allRun(kMoreThanProcessors);
    std::vector<Underway<void>> tasks;
    for (int task = 0; task < kMoreThanProcessors; ++task)
        tasks.push_back(onWorker([&] { allRun.arrive_and_wait(); }));
    for (auto& task : tasks)
        QCoro::waitFor(task);
    EXPECT_TRUE(allRun.try_wait());
}
