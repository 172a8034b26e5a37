#include "Platform/Disks/Umount.h"

#include "Platform/ChildProcess.h"
#include "Platform/Text.h"

namespace slatewise::Umount {

namespace {

/// What is not yet written must get to the disk.
constexpr std::chrono::minutes kLimit{5};

} // namespace

Result run(const std::filesystem::path& mountPoint) {
    const ChildProcess::Command command{
        .executable = "/bin/sh",
        .arguments = {"-c", R"(exec /bin/umount -- "$0" 2>&1)", mountPoint.native()},
        .environment = {{"LC_ALL", "C"}}};
    const auto result = ChildProcess::run(command, {.run = kLimit});
    constexpr int kDidNotEnd = -1;
    if (result.end != ChildProcess::End::Exited)
        return {kDidNotEnd, "umount did not end"};
    const auto words = Text::replaced(result.standardOutput, mountPoint.native() + ": ", "");
    const auto lines = Text::pieces(words, '\n');
    return {result.status, lines.empty() ? "" : std::string(lines.back())};
}

} // namespace slatewise::Umount
