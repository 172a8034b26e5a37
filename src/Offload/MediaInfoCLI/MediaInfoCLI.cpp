#include "Offload/MediaInfoCLI/MediaInfoCLI.h"

#include "Platform/Error.h"
#include "Platform/Files/FileDescriptor.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"

#include <fcntl.h>
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

/// The tool takes a name for UTF-8 text and does not find a file whose name is none. Such a file
/// has another name for as long as we hold it open.
class NameForTool {
public:
    explicit NameForTool(const std::filesystem::path& file) {
        // The tool runs in another folder than we do.
        name_ = std::filesystem::absolute(file).native();
        if (Text::displayable(name_) == name_)
            return;
        held_ = FileDescriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        if (held_)
            name_ = "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(held_.get());
    }

    const std::string& text() const { return name_; }

private:
    std::string name_;
    FileDescriptor held_;
};

ChildProcess::Result runTool(const std::filesystem::path& executable,
                             const std::filesystem::path& file, const Tool& tool,
                             const std::stop_token& stop) {
    const NameForTool name(file);
    return ChildProcess::run(
        {.executable = executable,
         .arguments = {"--Output=JSON", "--Full", "--ParseSpeed=0", name.text()},
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

std::optional<std::string> runJSON(const std::filesystem::path& file, const Tool& tool,
                                   const Log& log, const std::stop_token& stop) {
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
        return usableOutput(runTool(*executable, file, tool, stop),
                            Text::displayable(file.filename().native()), note);
    } catch (const std::exception& failure) {
        note("MediaInfo CLI failed to start: " + describe(failure));
        return std::nullopt;
    }
}

} // namespace slatewise::MediaInfoCLI
