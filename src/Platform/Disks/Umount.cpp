#include "Platform/Disks/Umount.h"

#include "Platform/ChildProcess.h"

namespace slatewise::Umount {

namespace {

/// What is not yet written must get to the disk.
constexpr std::chrono::minutes kLimit{5};

} // namespace

int run(const std::filesystem::path& mountPoint) {
    const ChildProcess::Command command{
        .executable = "/bin/umount", .arguments = {"--", mountPoint.native()}, .environment = {}};
    const auto result = ChildProcess::run(command, {.run = kLimit});
    constexpr int kDidNotEnd = -1;
    return result.end == ChildProcess::End::Exited ? result.status : kDidNotEnd;
}

} // namespace slatewise::Umount
