#include "Platform/ProcessEnd.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace slatewise {

void endProcess(int exitCode) {
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
    std::_Exit(exitCode);
}

} // namespace slatewise
