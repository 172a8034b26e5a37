#include "Verify/ChecksumList.h"

#include "Platform/Error.h"
#include "Require.h"

#include <algorithm>
#include <cstdint>

using namespace slatewise;

/// A list that lies beside somebody's footage.
extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    for (const auto line : Verify::ChecksumList::linesOf({data, size})) {
        try {
            const auto [digest, path] = Verify::ChecksumList::parsed(line, "list");
            fuzz::require(digest.size() == 64 && !path.empty());
            fuzz::require(
                std::ranges::none_of(digest, [](char sign) { return sign >= 'A' && sign <= 'F'; }));
        } catch (const Error&) {
            // Refused, as it should be told.
        }
    }
    return 0;
}
