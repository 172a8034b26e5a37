#pragma once

#include <cstdlib>

namespace slatewise::fuzz {

/// What must hold for any input; a fuzzer reports an abort together with the input.
inline void require(bool holds) {
    if (!holds)
        std::abort();
}

} // namespace slatewise::fuzz
