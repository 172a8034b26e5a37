#pragma once

#include "Offload/ClipName.h"
#include "Platform/ChildProcess.h"

#include <atomic>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

/// The `mediainfo` command-line tool, which knows what cameras write into their clips. We have no
/// reader of our own for MXF, R3D, BRAW and the like. The tool is optional: without it clips are
/// copied and proved as well, and facts about them stay absent.
namespace slatewise::MediaInfoCLI {

/// What the log was told already. One for a process is enough for a person who reads the log.
struct Noted {
    std::atomic<bool> didLogMissing = false;
    std::atomic<bool> didLogPath = false;
};

/// The process's own.
Noted& noted();

/// Where the tool is and how long it may take for one file.
struct Tool {
    /// The first executable file among these is the tool. Looked up anew for every file, so that
    /// a tool installed meanwhile is found.
    std::vector<std::filesystem::path> candidates;
    ChildProcess::Limits limits;
    Noted* noted = &MediaInfoCLI::noted();

    /// The tool as this program finds it: beside itself, then where it is usually installed.
    /// Never a file that anybody but the superuser and the user could have put in its place.
    static Tool usual();
};

/// Receives one line for the log.
using Log = std::function<void(const std::string&)>;

/// The tool's JSON about one clip, whose path must be UTF-8; empty when nothing usable came back,
/// for whatever reason, which is then in the log. Never fails. Blocks for as long as the tool's
/// limits say; ends at once when `stop` is requested. Any thread.
std::optional<std::string> runJSON(const ClipName& clip, const Tool& tool, const Log& log,
                                   const std::stop_token& stop = {});

/// Where to look for the tool, in this order: in the application's own folder `bundle`, near its
/// executable and near what it was started as (`argv0`), in the system. A "Vendor" folder above the
/// executable counts while that lies in the source tree that it was built from.
std::vector<std::filesystem::path>
candidateURLs(const std::filesystem::path& bundle,
              const std::optional<std::filesystem::path>& executable,
              const std::optional<std::string>& argv0);

} // namespace slatewise::MediaInfoCLI
