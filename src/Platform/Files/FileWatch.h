#pragma once

#include <filesystem>
#include <functional>
#include <memory>

namespace slatewise {

/// Tells that a file may have appeared, changed or gone, in whatever way: written in place,
/// replaced by renaming, its permissions changed. Its folder must exist. GUI thread.
class FileWatch {
public:
    /// `onEvent` is called a moment after things have calmed down, possibly without a change.
    FileWatch(const std::filesystem::path& file, std::function<void()> onEvent);
    ~FileWatch();
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

private:
    struct Watcher;
    std::unique_ptr<Watcher> watcher_;
};

} // namespace slatewise
