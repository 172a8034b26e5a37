#pragma once

#include "Offload/ClipName.h"
#include "Platform/ChildProcess.h"
#include "Platform/MediaTiming.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>

/// The media library, in a program of its own: it reads whatever lies on a card, and what it breaks
/// on, or asks for without measure, must not be this process's.
namespace slatewise::ClipReader {

inline constexpr const char* programName = "slatewise-clip-facts";

struct Program {
    /// Empty when there is none that can be trusted.
    std::optional<std::filesystem::path> executable;
    ChildProcess::Limits limits;

    /// As it was built or installed with this program.
    static Program usual();
};

/// What the library knows of a clip; nothing when it does not know it, or is not there. Never
/// fails. Blocks for as long as the program's limits say; ends at once when `stop` is requested.
/// `log`, which may be empty, gets a line when the program does not end well. Any thread.
MediaTiming timing(const ClipName& clip, const Program& program,
                   const std::function<void(const std::string&)>& log,
                   const std::stop_token& stop = {});

} // namespace slatewise::ClipReader
