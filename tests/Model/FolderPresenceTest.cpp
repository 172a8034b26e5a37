#include "Model/Volumes/FolderPresence.h"
#include "support/Desk.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <latch>
#include <memory>
#include <thread>

using namespace slatewise;
using namespace slatewise::test;

TEST(FolderPresence, NeverWaitsForAFolderThatIsSilent) {
    // Each question takes its time, also the one that is asked at the news.
    const auto mayAnswer = std::make_shared<std::latch>(1);
    const auto asked = std::make_shared<std::atomic<int>>(0);
    FolderPresence presence([mayAnswer, asked](const auto& folder) {
        if (folder != "/share")
            return folder == "/here";
        ++*asked;
        mayAnswer->wait();
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        return false;
    });
    int gone = 0;
    presence.setOnGone([&] {
        ++gone;
        EXPECT_FALSE(presence.isThere("/share"));
    });

    EXPECT_TRUE(presence.isThere("/here"));
    EXPECT_FALSE(presence.isThere("/elsewhere"));
    const auto begin = std::chrono::steady_clock::now();
    for (int time = 0; time < 100; ++time)
        EXPECT_TRUE(presence.isThere("/share")) << "until it says otherwise";
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    EXPECT_EQ(*asked, 1);
    EXPECT_EQ(gone, 0);

    mayAnswer->count_down();
    Desk::waitUntil([&] { return gone == 1; });
    EXPECT_EQ(*asked, 1);
    EXPECT_TRUE(presence.isThere("/share")) << "asked anew: it may have come back";
    Desk::waitUntil([&] { return gone == 2; });
}
