#include "Offload/MediaProbe.h"

#include "Offload/ClipLength.h"
#include "Offload/MediaInfoCLI/MediaInfoJSON.h"
#include "Offload/ReportKind.h"
#include "Offload/TimecodeFormat.h"
#include "Offload/WavFile.h"
#include "Platform/Error.h"
#include "Platform/Text.h"

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

MediaMetadata probeTool(const std::filesystem::path& file, const Context& context) {
    const auto json = MediaInfoCLI::runJSON(file, context.tool, context.log, context.stop);
    return json ? MediaInfoJSON::metadata(*json) : MediaMetadata();
}

MediaMetadata probeLibrary(const std::filesystem::path& file, ReportKind kind,
                           const Context& context) {
    const auto timing = ClipReader::timing(file, context.reader, context.log, context.stop);
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

MediaMetadata ask(const std::filesystem::path& file, ReportKind kind, const Context& context) {
    const auto extension = lowercasedExtension(file.native());
    auto facts = probeTool(file, context);
    if (kind == ReportKind::Audio && extension == "wav")
        facts = merge(std::move(facts), WavFile::timing(file));
    facts = merge(std::move(facts), probeLibrary(file, kind, context));
    const bool saysNothing = !facts.durationSeconds && !facts.captureFps && !facts.timecodeStart;
    if (saysNothing && (extension == "r3d" || extension == "braw") && context.log)
        context.log("MediaInfo returned no fields for " +
                    Text::displayable(file.filename().native()));
    complete(facts);
    return facts;
}

} // namespace

MediaMetadata probe(const std::filesystem::path& file, const Context& context) {
    const auto kind = reportKindOf(file.native());
    if (kind != ReportKind::Video && kind != ReportKind::Audio)
        return {};
    try {
        return ask(file, kind, context);
    } catch (const std::exception& failure) {
        if (context.log)
            context.log("Media probe failed for " + Text::displayable(file.filename().native()) +
                        ": " + describe(failure));
        return {};
    }
}

void attachMediaMetadata(std::span<FileCopyResult> rows, const std::filesystem::path& root,
                         const Context& context) {
    for (auto& row : rows) {
        if (context.stop.stop_requested())
            return;
        if (row.action != RowAction::Copy && row.action != RowAction::Hash)
            continue;
        row.media = probe(root / row.relativePath, context);
    }
}

} // namespace slatewise::MediaProbe
