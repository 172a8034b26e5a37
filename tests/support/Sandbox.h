#pragma once

#include <functional>

namespace slatewise::test {

/// Runs `body` on a thread of its own, for which a system call fails with a code of the test's
/// choice, as it does on older kernels and in sandboxes. A code of 0 leaves the call as it is.
void runWithout(long call, int code, const std::function<void()>& body);

} // namespace slatewise::test
