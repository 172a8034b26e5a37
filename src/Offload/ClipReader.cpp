#include "Offload/ClipReader.h"

#include "Platform/Error.h"
#include "Platform/Text.h"
#include "Platform/TrustedPrograms.h"

#include <atomic>

namespace slatewise::ClipReader {

Program Program::usual() {
    constexpr std::size_t kMostOutputBytes = 65'536;
    return {.executable = TrustedPrograms::helper(programName),
            .limits = {.outputBytes = kMostOutputBytes}};
}

MediaTiming timing(const ClipName& clip, const Program& program,
                   const std::function<void(const std::string&)>& log,
                   const std::stop_token& stop) {
    const auto note = [&](const std::string& what) {
        if (log)
            log("Clip reader " + what + ": " + Text::displayable(clip.name));
    };
    if (!program.executable) {
        // One line is enough for whoever reads the log.
        static std::atomic<bool> isNoted = false;
        if (log && !isNoted.exchange(true))
            note("missing, or open to others; clips have fewer facts from here on");
        return {};
    }
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
