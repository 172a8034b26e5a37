#pragma once

namespace slatewise {

/// Ends the process with what was printed so far, and tears nothing down: a thread that waits for a
/// disk which does not answer is never joined, and would wake up among destroyed objects.
[[noreturn]] void endProcess(int exitCode);

/// Has the process say in a line what it ends by, and with 1, where it would be taken down in the
/// middle: by a failure that nobody caught, as when the memory runs out. A file that may not grow
/// any more is a failure of the write from then on.
void sayWhatEndsIt(const char* program);

} // namespace slatewise
