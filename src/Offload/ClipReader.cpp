#include "Offload/ClipReader.h"

#include "Platform/Error.h"
#include "Platform/Text.h"
#include "Platform/TrustedPrograms.h"

namespace slatewise::ClipReader {

Program Program::usual() {
    constexpr std::size_t kMostOutputBytes = 65'536;
    return {.executable = TrustedPrograms::helper(programName),
            .limits = {.outputBytes = kMostOutputBytes}};
}

MediaTiming timing(const ClipName& clip, const Program& program,
                   const std::function<void(const std::string&)>& log,
                   const std::stop_token& stop) {
    if (!program.executable)
        return {};
    const auto note = [&](const std::string& what) {
        if (log)
            log("Clip reader " + what + ": " + Text::displayable(clip.name));
    };
    try {
        const auto result = ChildProcess::run({.executable = *program.executable,
                                               .arguments = {clip.path.native()},
                                               .environment = {}},
                                              program.limits, stop);
        if (result.end == ChildProcess::End::TimedOut)
            note("timed out");
        else if (result.end == ChildProcess::End::Exited && result.status != 0)
            note("ended with " + std::to_string(result.status));
        return MediaTiming::fromLines(result.standardOutput);
    } catch (const std::exception& failure) {
        note("did not start (" + describe(failure) + ")");
        return {};
    }
}

} // namespace slatewise::ClipReader
