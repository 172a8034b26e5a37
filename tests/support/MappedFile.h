#pragma once

#include <cstddef>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
#include <unistd.h>

namespace slatewise::test {

/// Another program's view of a file.
class MappedFile {
public:
    explicit MappedFile(const std::filesystem::path& path, std::size_t size) : size_(size) {
        const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        start_ = ::mmap(nullptr, size_, PROT_READ, MAP_SHARED | MAP_POPULATE, file, 0);
        ::close(file);
    }
    ~MappedFile() { ::munmap(start_, size_); }
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

private:
    void* start_ = nullptr;
    std::size_t size_;
};

} // namespace slatewise::test
