#include "Platform/Disks/FileSystemErrors.h"

#include "Platform/Disks/BlockDevices.h"

#include <fstream>

namespace slatewise {

namespace {

std::int64_t countIn(const std::filesystem::path& counter) {
    std::int64_t count = 0;
    std::ifstream(counter) >> count;
    return count;
}

} // namespace

FileSystemErrors::FileSystemErrors(const std::filesystem::path& path)
    : counter_("/sys/fs/ext4" / BlockDevices::pathUnder(path).filename() / "errors_count"),
      before_(countIn(counter_)) {}

bool FileSystemErrors::haveGrown() const {
    return countIn(counter_) > before_;
}

} // namespace slatewise
