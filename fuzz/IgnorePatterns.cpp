#include "MediaHashList/IgnorePatterns.h"

#include "MediaHashList/Generation.h"
#include "MediaHashList/History.h"
#include "Platform/Text.h"
#include "Require.h"

using namespace slatewise;
using namespace slatewise::MediaHashList;

namespace {

/// Short enough for a list of nothing but patterns to be held against it within a fuzzer's
/// patience.
constexpr std::size_t kLongestPath = 256;

std::string takenLast(std::vector<std::string>& lines) {
    if (lines.empty())
        return {};
    auto line = lines.back().substr(0, kLongestPath);
    lines.pop_back();
    return line;
}

} // namespace

/// Each line is a pattern of somebody's list, but the last two are paths. What was asked before
/// changes no verdict, and what is written for a name is of that name.
extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    std::vector<std::string> patterns;
    for (const auto line : Text::pieces({data, size}, '\n'))
        patterns.emplace_back(line);
    const auto path = takenLast(patterns);
    const auto before = takenLast(patterns);
    IgnoreList list(patterns);
    (void)list.verdict(before);
    fuzz::require(list.verdict(path) == IgnoreList(patterns).verdict(path));
    const bool isName = !path.empty() && path.find('/') == std::string::npos;
    if (isName && path != kHistoryFolder && canHold(path))
        fuzz::require(IgnoreList(ignorePatterns({path})).ignores(path));
    return 0;
}
