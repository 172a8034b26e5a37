#include "MediaFile.h"

#include "MxfTimecode.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/log.h>
}

namespace slatewise::MediaFile {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLimit{15};

/// What cameras and sound recorders write. A playlist or a network description that bears the name
/// of a clip stays closed.
constexpr const char* kContainers = "mov,mp4,m4a,3gp,3g2,mj2,mxf,matroska,webm,avi,mpegts,wav,w64,"
                                    "aiff,mp3,aac,ogg";

/// How long the library may go on; asked by it while it reads.
struct Patience {
    const SteadyClock::time_point deadline = SteadyClock::now() + kLimit;

    static int isOver(void* patience) {
        const auto& self = *static_cast<const Patience*>(patience);
        return SteadyClock::now() > self.deadline ? 1 : 0;
    }
};

struct ContextCloser {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
using Context = std::unique_ptr<AVFormatContext, ContextCloser>;

/// Null when the library makes nothing of the file.
Context open(const std::filesystem::path& file, Patience& patience) {
    AVFormatContext* context = avformat_alloc_context();
    if (!context)
        return nullptr;
    context->interrupt_callback = {&Patience::isOver, &patience};
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    av_dict_set(&options, "format_whitelist", kContainers, 0);
    // The prefix keeps a name with a colon from being read as an address. A failure frees the
    // context.
    const auto address = "file:" + file.native();
    const int failure = avformat_open_input(&context, address.c_str(), nullptr, &options);
    av_dict_free(&options);
    return Context(failure < 0 ? nullptr : context);
}

std::optional<double> positive(double number) {
    if (std::isfinite(number) && number > 0)
        return number;
    return std::nullopt;
}

std::optional<FrameRate> rate(AVRational number) {
    return FrameRate::of(number.num, number.den);
}

std::span<AVStream* const> tracks(const AVFormatContext& context) {
    return {context.streams, context.nb_streams};
}

const AVStream* firstVideo(const AVFormatContext& context) {
    for (const auto* track : tracks(context)) {
        // A cover picture stands among the tracks, but it is none.
        if (track->codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
            !(track->disposition & AV_DISPOSITION_ATTACHED_PIC))
            return track;
    }
    return nullptr;
}

const AVStream* firstTimecode(const AVFormatContext& context) {
    for (const auto* track : tracks(context)) {
        if (track->codecpar->codec_tag == MKTAG('t', 'm', 'c', 'd'))
            return track;
    }
    return nullptr;
}

std::optional<double> duration(const AVFormatContext& context) {
    // Sound may go on when the pictures have ended.
    const auto* video = firstVideo(context);
    if (video && video->duration != AV_NOPTS_VALUE && video->duration > 0)
        return positive(static_cast<double>(video->duration) * av_q2d(video->time_base));
    if (context.duration == AV_NOPTS_VALUE)
        return std::nullopt;
    const double whole = static_cast<double>(context.duration) / AV_TIME_BASE;
    // The whole is rounded, a track's length is in units that divide its frames.
    for (const auto* track : tracks(context)) {
        if (track->duration == AV_NOPTS_VALUE)
            continue;
        constexpr double kRounding = 0.001;
        const double exact = static_cast<double>(track->duration) * av_q2d(track->time_base);
        if (std::abs(exact - whole) < kRounding)
            return positive(exact);
    }
    return positive(whole);
}

std::optional<FrameRate> frameRate(const AVStream& video) {
    const auto average = rate(video.avg_frame_rate);
    return average ? average : rate(video.r_frame_rate);
}

/// As many as fit into the track's length.
std::optional<std::int64_t> framesInLength(const AVStream& video) {
    const auto perSecond = frameRate(video);
    if (!perSecond || video.duration == AV_NOPTS_VALUE || video.duration <= 0)
        return std::nullopt;
    const AVRational oneFrame = {static_cast<int>(perSecond->seconds()),
                                 static_cast<int>(perSecond->frames())};
    const auto frames = av_rescale_q(video.duration, video.time_base, oneFrame);
    return frames > 0 ? std::optional(frames) : std::nullopt;
}

/// As the container counts them, unless it counts more than it shows, as those do of which somebody
/// has cut something off.
std::optional<std::int64_t> frameCount(const AVStream& video) {
    const auto shown = framesInLength(video);
    if (video.nb_frames > 0 && (!shown || std::abs(video.nb_frames - *shown) <= 1))
        return video.nb_frames;
    return shown;
}

/// Of the timecode track. One container has that in its header alone.
std::optional<FrameRate> timecodeRate(AVFormatContext& context) {
    if (const auto* timecode = firstTimecode(context))
        return rate(timecode->avg_frame_rate);
    if (std::string_view(context.iformat->name) != "mxf" || avio_seek(context.pb, 0, SEEK_SET) != 0)
        return std::nullopt;
    constexpr int kHeadBytes = 1 << 20;
    std::vector<unsigned char> head(kHeadBytes);
    const auto read =
        static_cast<std::size_t>(std::max(avio_read(context.pb, head.data(), kHeadBytes), 0));
    return MxfTimecode::roundedRate({reinterpret_cast<const char*>(head.data()), read});
}

/// Of the file, else of the first track that has one.
std::optional<std::string> timecodeText(const AVFormatContext& context) {
    const auto in = [](const AVDictionary* tags) -> std::optional<std::string> {
        const auto* entry = av_dict_get(tags, "timecode", nullptr, 0);
        return entry ? std::optional<std::string>(entry->value) : std::nullopt;
    };
    auto text = in(context.metadata);
    for (const auto* track : tracks(context)) {
        if (!text)
            text = in(track->metadata);
    }
    return text;
}

/// Some containers tell everything in their headers; others need a look at their content.
bool isComplete(const AVFormatContext& context) {
    const auto* video = firstVideo(context);
    return duration(context) && (!video || frameRate(*video));
}

} // namespace

MediaTiming timing(const std::filesystem::path& file) {
    // Its complaints about foreign files would go to standard error.
    av_log_set_level(AV_LOG_QUIET);
    Patience patience;
    const auto context = open(file, patience);
    if (!context)
        return {};
    if (!isComplete(*context) && avformat_find_stream_info(context.get(), nullptr) < 0)
        return {};

    MediaTiming result;
    result.durationSeconds = duration(*context);
    if (const auto* video = firstVideo(*context)) {
        result.frameRate = frameRate(*video);
        result.frameCount = frameCount(*video);
    }
    result.timecode = timecodeText(*context);
    result.timecodeRate = timecodeRate(*context);
    return result;
}

} // namespace slatewise::MediaFile
