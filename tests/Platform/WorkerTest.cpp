#include "Platform/Worker.h"

#include "Platform/Error.h"

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

QCoro::Task<std::string> storyOn(std::thread::id here, std::vector<std::string>& story) {
    auto word = co_await onWorker([here] {
        return std::make_unique<std::string>(std::this_thread::get_id() == here ? "same" : "other");
    });
    story.push_back(*word);
    try {
        co_await onWorker([] { throw PosixError("read", "/card", EIO); });
    } catch (const PosixError& failure) {
        story.push_back(std::to_string(failure.code() == EIO));
    }
    story.push_back(std::this_thread::get_id() == here ? "back" : "lost");
    co_return std::string("end");
}

} // namespace

TEST(Worker, ResultsAndFailuresComeBackToTheAwaitersThread) {
    std::vector<std::string> story;
    const auto here = std::this_thread::get_id();
    EXPECT_EQ(QCoro::waitFor(storyOn(here, story)), "end");
    EXPECT_EQ(story, (std::vector<std::string>{"other", "1", "back"}));
}

TEST(Worker, WhatTheWorkHeldIsDestroyedThere) {
    std::thread::id destroyedOn;
    std::thread::id workedOn;
    QCoro::waitFor(onWorker(
        [witness = Witness(destroyedOn), &workedOn] { workedOn = std::this_thread::get_id(); }));
    EXPECT_EQ(destroyedOn, workedOn);
    EXPECT_NE(destroyedOn, std::this_thread::get_id());
}

TEST(Worker, LongWorkHoldsUpNothingElse) {
    constexpr int kMoreThanProcessors = 64;
    std::latch allRun(kMoreThanProcessors);
    std::vector<QCoro::Task<void>> tasks;
    for (int task = 0; task < kMoreThanProcessors; ++task)
        tasks.push_back(onWorker([&] { allRun.arrive_and_wait(); }));
    for (auto& task : tasks)
        QCoro::waitFor(task);
    EXPECT_TRUE(allRun.try_wait());
}
