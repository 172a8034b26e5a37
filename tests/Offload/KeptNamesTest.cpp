#include "Offload/KeptNames.h"

#include "support/Files.h"

#include <gmock/gmock.h>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

TEST(KeptNames, AreThoseOfTheListingInWhateverUnicodeForm) {
    using Names = std::vector<std::string>;
    struct Case {
        Names onDisk;
        Names copied;
        Names lost;
    };
    // One letter as one character and as two.
    const std::string whole = "\u015f";
    const std::string apart = "s\u0327";
    const Case cases[] = {
        {{"a", "b/c"}, {"a", "b/c"}, {}},
        {{"A"}, {"a"}, {"a"}},
        {{apart + "/1"}, {whole + "/1"}, {}},
        {{apart, whole}, {apart, whole}, {}},
        {{apart}, {apart, whole}, {whole}},
        {{"K"}, {"\u212a"}, {}},
        {{"o\uFFFDx"}, {"o\xc1\x81x"}, {"o\xc1\x81x"}},
    };
    for (const auto& [onDisk, copied, lost] : cases) {
        SCOPED_TRACE(PrintToString(copied));
        const TemporaryFolder disk;
        for (const auto& name : onDisk)
            writeFile(disk / "session" / name, name);
        std::vector<FileCopyResult> rows(copied.size());
        for (std::size_t row = 0; row < rows.size(); ++row) {
            rows[row].relativePath = copied[row];
            rows[row].verifyStatus = VerifyStatus::Verified;
        }
        const RootFolder root(disk.path());
        Names told;
        for (const auto& problem :
             KeptNames::findLost(root, "session", root.below("session"), rows))
            told.push_back(problem.subject);
        EXPECT_EQ(told, lost);
        for (const auto& row : rows)
            EXPECT_EQ(row.verifyStatus == VerifyStatus::Failed,
                      Matches(Contains(row.relativePath))(lost));
        const auto renamed = KeptNames::findLost(root, "SESSION", root.below("session"), {});
        EXPECT_THAT(renamed, SizeIs(1)) << "nobody finds it by that name";
    }
}
