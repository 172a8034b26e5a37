#include "MediaFile.h"

#include <cstdio>

// Started by our other programs, once for each clip, under limits on time and memory.
int main(int count, char** words) {
    constexpr int kWrongUsage = 2;
    if (count != 2)
        return kWrongUsage;
    const auto lines = slatewise::MediaFile::timing(words[1]).lines();
    return std::fputs(lines.c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? 1 : 0;
}
