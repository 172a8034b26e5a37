#pragma once

#include "Offload/ClipReader.h"
#include "Offload/MediaInfoCLI/MediaInfoCLI.h"
#include "Offload/OffloadRows.h"
#include "Platform/Files/RootFolder.h"

#include <functional>
#include <span>
#include <stop_token>
#include <string>

/// What can be said about the timing of a file.
namespace slatewise::MediaProbe {

/// What a probe works with.
struct Context {
    MediaInfoCLI::Tool tool = MediaInfoCLI::Tool::usual();
    ClipReader::Program reader = ClipReader::Program::usual();
    MediaInfoCLI::Log log;
    /// When requested, a probe ends at once with what it knows by then.
    std::stop_token stop;
};

/// Asks the `mediainfo` tool, a WAV file's own chunks and the media library, in this order; a later
/// source fills only what the earlier ones left open. Only what bears the name of a video or audio
/// file is opened, and all three read the very file that was. Never fails: what cannot be learnt is
/// absent. Blocks for some seconds at most; any thread.
MediaMetadata probe(const FileBeneath& file, const Context& context = {});

/// Fills the media fields of every row whose file was copied or hashed and lies where `place` says.
/// Rows stay as they are otherwise: what is known of a clip has no say in whether its copy is
/// proved. Once `context.stop` is requested the remaining rows get nothing.
void attachMediaMetadata(std::span<FileCopyResult> rows,
                         const std::function<FileBeneath(const std::string& relative)>& place,
                         const Context& context);

} // namespace slatewise::MediaProbe
