#pragma once

namespace slatewise {

/// Ends the process with what was printed so far, and tears nothing down: a thread that waits for a
/// disk which does not answer is never joined, and would wake up among destroyed objects.
[[noreturn]] void endProcess(int exitCode);

} // namespace slatewise
