#include "Offload/MediaProbe.h"

#include "Offload/ClipLength.h"
#include "Offload/MediaInfoCLI/MediaInfoJSON.h"
#include "Offload/ReportKind.h"
#include "Offload/TimecodeFormat.h"
#include "Offload/WavFile.h"
#include "Platform/Error.h"
#include "Platform/Text.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace slatewise::MediaProbe {

namespace {

template <typename T>
void fill(std::optional<T>& field, const std::optional<T>& further) {
    if (!field)
        field = further;
}

std::optional<FrameRate> rateOf(const MediaMetadata& facts) {
    const auto& rate = facts.timecodeRate ? facts.timecodeRate : facts.captureFps;
    return rate ? FrameRate::near(*rate) : std::nullopt;
}

/// Field by field what the primary says, else what the secondary says. What the secondary has
/// counted is of no use where it counted from another start or at another rate.
MediaMetadata merge(MediaMetadata primary, MediaMetadata secondary) {
    const auto ownRate = rateOf(primary);
    if (ownRate && ownRate != rateOf(secondary)) {
        secondary.durationTC.reset();
        secondary.timecodeEnd.reset();
    }
    if (primary.timecodeStart && primary.timecodeStart != secondary.timecodeStart)
        secondary.timecodeEnd.reset();
    fill(primary.timecodeStart, secondary.timecodeStart);
    fill(primary.timecodeEnd, secondary.timecodeEnd);
    fill(primary.durationTC, secondary.durationTC);
    fill(primary.durationSeconds, secondary.durationSeconds);
    fill(primary.captureFps, secondary.captureFps);
    fill(primary.timecodeRate, secondary.timecodeRate);
    fill(primary.timecodeDropFrame, secondary.timecodeDropFrame);
    fill(primary.essence, secondary.essence);
    return primary;
}

MediaMetadata probeTool(const ClipName& clip, const Context& context) {
    const auto json = MediaInfoCLI::runJSON(clip, context.tool, context.log, context.stop);
    return json ? MediaInfoJSON::metadata(*json) : MediaMetadata();
}

MediaMetadata probeLibrary(const ClipName& clip, ReportKind kind, const Context& context) {
    const auto timing = ClipReader::timing(clip, context.reader, context.log, context.stop);
    MediaMetadata result;
    if (kind == ReportKind::Video && timing.frameRate)
        result.captureFps = timing.frameRate->perSecond();
    const auto told =
        timing.timecodeRate ? std::optional(timing.timecodeRate->perSecond()) : std::nullopt;
    result.timecodeRate = rateOfTimecode(told, result.captureFps);
    result.timecodeStart = TimecodeFormat::normalized(timing.timecode);
    if (result.timecodeStart)
        result.timecodeDropFrame = timing.timecode->find(';') != std::string::npos;
    countFrames({.pictures = timing.frameCount, .seconds = timing.durationSeconds}, result);
    return result;
}

/// Computes from length and rate what no source told.
void complete(MediaMetadata& facts) {
    constexpr double kRoundingOfSeconds = 0.005;
    const auto rate = rateOf(facts);
    if (!facts.durationSeconds || !rate)
        return;
    const auto counting = TimecodeFormat::countingOf(facts.timecodeDropFrame);
    const auto frames =
        facts.durationTC
            ? TimecodeFormat::frameNumber(*facts.durationTC, *rate, counting)
            : TimecodeFormat::framesIn(*facts.durationSeconds, *rate, kRoundingOfSeconds);
    if (!frames)
        return;
    facts.durationTC = TimecodeFormat::text(*frames, *rate, counting);
    if (!facts.timecodeEnd && facts.timecodeStart)
        facts.timecodeEnd =
            TimecodeFormat::lastFrame(*facts.timecodeStart, *frames, *rate, counting);
}

MediaMetadata ask(const ClipName& clip, ReportKind kind, const Context& context) {
    const auto extension = lowercasedExtension(clip.name);
    auto facts = probeTool(clip, context);
    if (kind == ReportKind::Audio && extension == "wav")
        facts = merge(std::move(facts), WavFile::timing(clip.path));
    facts = merge(std::move(facts), probeLibrary(clip, kind, context));
    const bool saysNothing = !facts.durationSeconds && !facts.captureFps && !facts.timecodeStart;
    if (saysNothing && (extension == "r3d" || extension == "braw") && context.log)
        context.log("MediaInfo returned no fields for " + Text::displayable(clip.name));
    complete(facts);
    return facts;
}

/// Held by whoever calls, so that no other file can come to bear the clip's name in between.
FileDescriptor openClip(const FileBeneath& file) {
    auto clip = file.folder.open(file.relative, O_RDONLY | O_NONBLOCK, file.links);
    const auto facts = FileSystem::attributesOf(clip.get());
    if (!facts || facts->type != FileSystem::ItemType::RegularFile)
        throw PosixError("open", file.path(), facts ? EINVAL : errno);
    return clip;
}

} // namespace

MediaMetadata probe(const FileBeneath& file, const Context& context) {
    const auto name = file.relative.filename().native();
    const auto kind = reportKindOf(name);
    if (kind != ReportKind::Video && kind != ReportKind::Audio)
        return {};
    try {
        const auto held = openClip(file);
        const auto path =
            "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(held.get());
        return ask({path, name}, kind, context);
    } catch (const std::exception& failure) {
        if (context.log)
            context.log("Media probe failed for " + Text::displayable(name) + ": " +
                        describe(failure));
        return {};
    }
}

void attachMediaMetadata(std::span<FileCopyResult> rows,
                         const std::function<FileBeneath(const std::string& relative)>& place,
                         const Context& context) {
    for (auto& row : rows) {
        if (context.stop.stop_requested())
            return;
        if (row.action != RowAction::Copy && row.action != RowAction::Hash)
            continue;
        row.media = probe(place(row.relativePath), context);
    }
}

} // namespace slatewise::MediaProbe
