#include "Platform/Disks/MountEvents.h"

#include "Platform/Disks/MountTable.h"
#include "Platform/Error.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace slatewise {

MountEvents::MountEvents(Source source) : wake_(::eventfd(0, EFD_CLOEXEC)) {
    if (!wake_)
        throw PosixError("eventfd", {}, errno);
    // Without the table, time alone must do.
    if (source == Source::Kernel)
        table_ = FileDescriptor(::open(MountTable::ofThisProcess.c_str(), O_RDONLY | O_CLOEXEC));
}

void MountEvents::waitUntil(std::chrono::steady_clock::time_point moment) {
    using std::chrono::milliseconds;
    const auto left = std::chrono::ceil<milliseconds>(moment - std::chrono::steady_clock::now());
    // The kernel tells each change once to each open table, without its being read.
    std::array<pollfd, 2> waiting = {pollfd{table_.get(), POLLPRI, 0},
                                     pollfd{wake_.get(), POLLIN, 0}};
    ::poll(waiting.data(), waiting.size(),
           static_cast<int>(std::max(left, milliseconds(0)).count()));
}

void MountEvents::wakeUp() {
    // The counter is never read, and so keeps saying it.
    ::eventfd_write(wake_.get(), 1);
}

} // namespace slatewise
