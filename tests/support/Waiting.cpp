#include "support/Waiting.h"

#include "Platform/FileDescriptor.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <thread>

namespace slatewise::test {

namespace {

using Clock = std::chrono::steady_clock;

std::filesystem::path nearestThatIsThere(std::filesystem::path path) {
    std::error_code none;
    while (!std::filesystem::exists(path, none) && path.has_relative_path())
        path = path.parent_path();
    return path;
}

/// What comes to the nearest that is there, until a nearer one has come in between.
void watchNearest(int watcher, const std::filesystem::path& file) {
    // Not what a look at it causes itself.
    constexpr std::uint32_t kChanges =
        IN_CREATE | IN_MOVED_TO | IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB;
    std::filesystem::path watched;
    for (auto nearest = nearestThatIsThere(file); nearest != watched;
         nearest = nearestThatIsThere(file)) {
        ::inotify_add_watch(watcher, nearest.c_str(), kChanges);
        watched = nearest;
    }
}

/// Something has happened, or the time is over.
void waitForEvent(int watcher, Clock::time_point end) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    pollfd watched{.fd = watcher, .events = POLLIN, .revents = 0};
    if (left.count() <= 0 || ::poll(&watched, 1, static_cast<int>(left.count())) <= 0)
        return;
    std::array<char, 65536> events;
    // What it was does not matter: whoever waits looks again.
    if (::read(watcher, events.data(), events.size()) < 0)
        throw std::runtime_error("no events of files");
}

} // namespace

bool waitUntil(const std::function<bool()>& condition, std::chrono::seconds limit,
               const std::function<void()>& pause) {
    const auto end = Clock::now() + limit;
    while (!condition()) {
        if (Clock::now() > end)
            return false;
        if (pause)
            pause();
        else
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

bool waitForFile(const std::filesystem::path& file, const std::function<bool()>& condition,
                 std::chrono::seconds limit) {
    const FileDescriptor watcher(::inotify_init1(IN_CLOEXEC));
    if (!watcher)
        throw std::runtime_error("no watcher of files");
    const auto end = Clock::now() + limit;
    while (true) {
        // Before the look, so that nothing happens between the two unseen.
        watchNearest(watcher.get(), file);
        if (condition())
            return true;
        if (Clock::now() > end)
            return false;
        waitForEvent(watcher.get(), end);
    }
}

bool waitForFile(const std::filesystem::path& file) {
    return waitForFile(file, [&] { return std::filesystem::exists(file); });
}

} // namespace slatewise::test
