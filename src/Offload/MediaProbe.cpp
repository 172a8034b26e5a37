#include "Offload/MediaProbe.h"

#include "Offload/MediaInfoCLI/MediaInfoJSON.h"
#include "Offload/ReportKind.h"
#include "Offload/TimecodeFormat.h"
#include "Offload/WavFile.h"
#include "Platform/Error.h"
#include "Platform/MediaFile.h"
#include "Platform/Numbers.h"
#include "Platform/Text.h"

namespace slatewise::MediaProbe {

namespace {

template <typename T>
void fill(std::optional<T>& field, const std::optional<T>& further) {
    if (!field)
        field = further;
}

/// Field by field what the primary says, else what the secondary says.
MediaMetadata merge(MediaMetadata primary, const MediaMetadata& secondary) {
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
                           const std::stop_token& stop) {
    const auto timing = MediaFile::timing(file, stop);
    MediaMetadata result;
    if (kind == ReportKind::Video)
        result.captureFps = timing.nominalFrameRate;
    result.timecodeRate =
        timing.timecodeFrameSeconds ? 1 / *timing.timecodeFrameSeconds : result.captureFps;
    if (timing.durationSeconds) {
        if (result.timecodeRate)
            result.durationTC =
                TimecodeFormat::durationTC(*timing.durationSeconds, *result.timecodeRate);
        result.durationSeconds = Numbers::rounded(*timing.durationSeconds, 2);
    }
    return result;
}

/// Computes from length and rate what no source told.
void complete(MediaMetadata& facts) {
    const auto rate = facts.timecodeRate ? facts.timecodeRate : facts.captureFps;
    if (!facts.durationSeconds || !rate)
        return;
    if (!facts.durationTC)
        facts.durationTC = TimecodeFormat::durationTC(*facts.durationSeconds, *rate);
    if (!facts.timecodeEnd && facts.timecodeStart)
        facts.timecodeEnd =
            TimecodeFormat::adding(*facts.timecodeStart, *facts.durationSeconds, *rate);
}

MediaMetadata ask(const std::filesystem::path& file, ReportKind kind, const Context& context) {
    const auto extension = lowercasedExtension(file.native());
    auto facts = probeTool(file, context);
    if (kind == ReportKind::Audio && extension == "wav")
        facts = merge(std::move(facts), WavFile::timing(file));
    facts = merge(std::move(facts), probeLibrary(file, kind, context.stop));
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
