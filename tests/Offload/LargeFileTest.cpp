#include "support/Files.h"
#include "support/Offloads.h"

#include <gtest/gtest.h>

using namespace slatewise;
using namespace slatewise::test;

TEST(LargeFile, MoreThanFourGibibytesAreCopiedWithoutTruncation) {
    constexpr std::uintmax_t kSize = (std::uintmax_t{4097} << 20) + 1;
    const TemporaryFolder card;
    const TemporaryFolder destination;
    writeFile(card / "long.mov", "start");
    std::filesystem::resize_file(card / "long.mov", kSize);
    const auto outcome = RunRecord().run(requestFor(card.path(), destination.path()));
    EXPECT_EQ(outcome.status, OutcomeStatus::Verified);
    EXPECT_EQ(static_cast<std::uintmax_t>(outcome.bytesCopied), kSize);
    EXPECT_EQ(std::filesystem::file_size(outcome.sessionRoot / "long.mov"), kSize);
}
