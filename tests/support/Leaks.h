#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

/// What this process has of things that could leak.
namespace slatewise::test {

inline std::ptrdiff_t entriesOf(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

inline std::ptrdiff_t threadCount() {
    return entriesOf("/proc/self/task");
}

/// The number of threads as soon as it is down to `expected`, or after a while in any case: a
/// thread that has done its work takes a moment to vanish.
inline std::ptrdiff_t threadCountSoon(std::ptrdiff_t expected) {
    for (int attempt = 0; attempt < 200 && threadCount() > expected; ++attempt)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return threadCount();
}

/// What of our memory is in the machine's. Always the same where a sanitizer holds on to what was
/// freed: it finds leaks by itself.
inline std::int64_t residentKiB() {
#ifdef SLATEWISE_ADDRESS_SANITIZER
    return 0;
#else
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word && word != "VmRSS:") {
    }
    std::int64_t size = 0;
    status >> size;
    return size;
#endif
}

} // namespace slatewise::test
