#pragma once

#include <chrono>
#include <filesystem>
#include <functional>

/// Waiting for what others do. Whoever waits for time to pass instead waits too long or too short.
namespace slatewise::test {

inline constexpr std::chrono::seconds kLongestWait{60};

/// Looks again and again, with `pause` in between, until the condition holds; gives whether it came
/// to hold within the limit. Without a pause of the caller's own the thread sleeps a moment.
bool waitUntil(const std::function<bool()>& condition, std::chrono::seconds limit = kLongestWait,
               const std::function<void()>& pause = {});

/// As above, for what shows at a file or folder that need not be there yet, nor the folders on its
/// way: looks only when something happens at it or at the nearest of them.
bool waitForFile(const std::filesystem::path& file, const std::function<bool()>& condition,
                 std::chrono::seconds limit = kLongestWait);

/// Until it is there.
bool waitForFile(const std::filesystem::path& file);

} // namespace slatewise::test
