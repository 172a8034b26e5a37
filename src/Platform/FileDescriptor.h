#pragma once

#include <unistd.h>

#include <utility>

namespace slatewise {

/// Owns an open descriptor and closes it. A result of closing is not looked at: what must be on the
/// disk was synced before.
class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor = -1) noexcept : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor() {
        if (descriptor_ >= 0)
            ::close(descriptor_);
    }

    explicit operator bool() const noexcept { return descriptor_ >= 0; }
    int get() const noexcept { return descriptor_; }

    /// Hands the descriptor to the caller, who closes it.
    int release() noexcept { return std::exchange(descriptor_, -1); }

private:
    int descriptor_;
};

} // namespace slatewise
