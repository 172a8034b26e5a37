#include "clipfacts/MxfTimecode.h"

#include "Require.h"

using namespace slatewise;

/// Whatever bears the name of an MXF file has a whole rate or none. Its number has two bytes there.
extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    const auto rate = MxfTimecode::roundedRate({data, size});
    fuzz::require(!rate ||
                  (rate->seconds() == 1 && rate->frames() >= 1 && rate->frames() <= 0xffff));
    return 0;
}
