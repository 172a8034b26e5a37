#include "Offload/MediaInfoCLI/MediaInfoCLI.h"

#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"

#include <unistd.h>

namespace slatewise::MediaInfoCLI {

namespace {

bool isExecutableFile(const std::filesystem::path& path) {
    const auto attributes = FileSystem::attributesIfAny(path);
    return attributes && attributes->type == FileSystem::ItemType::RegularFile &&
           ::access(path.c_str(), X_OK) == 0;
}

std::optional<std::filesystem::path> executableURL(const Tool& tool) {
    for (const auto& candidate : tool.candidates) {
        if (isExecutableFile(candidate))
            return candidate;
    }
    return std::nullopt;
}

ChildProcess::Result runTool(const std::filesystem::path& executable, const ClipName& clip,
                             const Tool& tool, const std::stop_token& stop) {
    return ChildProcess::run(
        {.executable = executable,
         .arguments = {"--Output=JSON", "--Full", "--ParseSpeed=0", clip.path.native()},
         .workingDirectory = executable.parent_path(),
         // In another locale names beyond ASCII would lead nowhere and numbers might have commas.
         .environment = {{"LC_ALL", "C.UTF-8"}}},
        tool.limits, stop);
}

/// From the first brace on: the tool may have said something before it.
std::optional<std::string> jsonIn(std::string output) {
    const auto brace = output.find('{');
    if (brace == std::string::npos)
        return std::nullopt;
    return output.erase(0, brace);
}

std::optional<std::string> usableOutput(ChildProcess::Result result, const std::string& fileName,
                                        const Log& log) {
    if (result.end == ChildProcess::End::Cancelled)
        return std::nullopt;
    if (result.end == ChildProcess::End::TimedOut) {
        log("MediaInfo CLI timed out: " + fileName);
        return std::nullopt;
    }
    const auto exit =
        "MediaInfo CLI exit " + std::to_string(result.status) + " for " + fileName + " (";
    if (result.standardOutput.empty()) {
        log(exit + "empty)");
        return std::nullopt;
    }
    if (result.status != 0)
        log(exit + std::to_string(result.standardOutput.size()) + " bytes)");
    return jsonIn(std::move(result.standardOutput));
}

} // namespace

Noted& noted() {
    static Noted instance;
    return instance;
}

std::optional<std::string> runJSON(const ClipName& clip, const Tool& tool, const Log& log,
                                   const std::stop_token& stop) {
    const auto note = [&](const std::string& line) {
        if (log)
            log(line);
    };
    const auto executable = executableURL(tool);
    if (!executable) {
        if (!tool.noted->didLogMissing.exchange(true))
            note("MediaInfo CLI missing; MXF/R3D/BRAW metadata will be empty.");
        return std::nullopt;
    }
    if (!tool.noted->didLogPath.exchange(true))
        note("MediaInfo CLI " + Text::displayable(executable->native()));
    try {
        return usableOutput(runTool(*executable, clip, tool, stop), Text::displayable(clip.name),
                            note);
    } catch (const std::exception& failure) {
        note("MediaInfo CLI failed to start: " + describe(failure));
        return std::nullopt;
    }
}

} // namespace slatewise::MediaInfoCLI
