#include "Reports/ReportTree.h"

#include <gmock/gmock.h>

using namespace slatewise;
using namespace ::testing;

namespace {

ManifestFile file(const std::string& path, std::int64_t sizeBytes) {
    ManifestFile result;
    result.relativePath = path;
    result.sizeBytes = sizeBytes;
    return result;
}

/// One line a node, indented: "path size/count", folders with a "/".
void append(std::vector<std::string>& lines, const std::vector<ReportNode>& nodes) {
    for (const auto& node : nodes) {
        EXPECT_TRUE(node.path.ends_with(node.name)) << node.path;
        lines.push_back(node.path + (node.isDirectory() ? "/ " : " ") +
                        std::to_string(node.totalBytes) + "/" + std::to_string(node.fileCount));
        append(lines, node.children);
    }
}

std::vector<std::string> built(const std::vector<ManifestFile>& files) {
    std::vector<std::string> lines;
    append(lines, ReportTree::build(files));
    return lines;
}

} // namespace

TEST(ReportTree, FoldsPathsIntoFoldersWithTotals) {
    EXPECT_THAT(built({}), IsEmpty());
    EXPECT_THAT(built({file("", 1), file("//", 2)}), IsEmpty());
    EXPECT_THAT(built({file("A/d.mov", 1), file("A/B/c.mov", 20), file("z", 300)}),
                ElementsAre("A/ 21/2", "A/B/ 20/1", "A/B/c.mov 20/1", "A/d.mov 1/1", "z 300/1"));
    EXPECT_THAT(built({file("/x.mov", 1), file("a//b", 5), file("x.mov", 2)}),
                ElementsAre("a/ 5/1", "a/b 5/1", "x.mov 2/1"))
        << "the later of two rows with one path counts";
    EXPECT_THAT(built({file("clip", 1), file("clip/inner", 20), file("b", 300)}),
                ElementsAre("b 300/1", "clip 21/2", "clip/inner 20/1"))
        << "a file with children is a file";
}

TEST(ReportTree, IsInTheOrderThatAPersonExpects) {
    EXPECT_THAT(built({file("b", 0), file("A10", 0), file("a", 0), file("B2", 0), file("A2", 0),
                       file("Z/a", 0), file("y/a", 0), file("\xff", 0), file("Ä", 0)}),
                ElementsAre("y/ 0/1", "y/a 0/1", "Z/ 0/1", "Z/a 0/1", "a 0/1", "Ä 0/1", "A2 0/1",
                            "A10 0/1", "b 0/1", "B2 0/1", "\xff 0/1"));
}

TEST(ReportTree, KeepsRowsApartThatCompareEqual) {
    // Composed and decomposed, and two bytes that no text knows.
    EXPECT_THAT(
        built({file("e\xcc\x81", 1), file("\xc3\xa9", 2), file("\xfe", 3), file("\xff", 4)}),
        ElementsAre("e\xcc\x81 1/1", "\xc3\xa9 2/1", "\xfe 3/1", "\xff 4/1"));
}
