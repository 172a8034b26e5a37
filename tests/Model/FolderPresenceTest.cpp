#include "Model/FolderPresence.h"
#include "support/Desk.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>

using namespace slatewise;
using namespace slatewise::test;

TEST(FolderPresence, NeverWaitsForAFolderThatIsSilent) {
    std::promise<bool> answer;
    const auto answered = answer.get_future().share();
    const auto asked = std::make_shared<std::atomic<int>>(0);
    FolderPresence presence([answered, asked](const auto& folder) {
        if (folder == "/share") {
            ++*asked;
            return answered.get();
        }
        return folder == "/here";
    });
    int gone = 0;
    presence.setOnGone([&gone] { ++gone; });

    EXPECT_TRUE(presence.isThere("/here"));
    EXPECT_FALSE(presence.isThere("/elsewhere"));
    const auto begin = std::chrono::steady_clock::now();
    for (int time = 0; time < 100; ++time)
        EXPECT_TRUE(presence.isThere("/share")) << "until it says otherwise";
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    EXPECT_EQ(*asked, 1);
    EXPECT_EQ(gone, 0);

    answer.set_value(false);
    Desk::waitUntil([&] { return gone == 1; });
    EXPECT_FALSE(presence.isThere("/share"));
}
