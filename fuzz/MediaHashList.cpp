#include "MediaHashList/Generation.h"
#include "Platform/Error.h"
#include "Require.h"

#include <algorithm>

using namespace slatewise;
using namespace slatewise::MediaHashList;

/// Whatever stands in a list is read or refused, and no path of it leads out of its folder.
extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    try {
        const auto generation = readGeneration({data, size});
        fuzz::require(std::all_of(generation.files.begin(), generation.files.end(),
                                  [](const auto& file) { return leadsDown(file.path); }));
    } catch (const Error&) {
        // Refused, as it should be told.
    }
    try {
        (void)readChain({data, size});
    } catch (const Error&) {
    }
    return 0;
}
