#include "Offload/MediaInfoCLI/MediaInfoJSON.h"

#include "Offload/ClipLength.h"
#include "Offload/MediaInfoCLI/MediaInfoTracks.h"
#include "Offload/TimecodeFormat.h"

namespace slatewise::MediaInfoJSON {

namespace {

template <typename T>
std::optional<T> firstOf(std::optional<T> preferred, std::optional<T> other) {
    return preferred ? preferred : other;
}

Track first(const std::vector<Track>& tracks, std::string_view type) {
    for (const auto& track : tracks) {
        if (track.lowercased("@type") == type)
            return track;
    }
    return {};
}

bool isTimecode(const Track& track) {
    const auto holds = [&](const char* key, std::string_view word) {
        return track.lowercased(key).find(word) != std::string::npos;
    };
    return track.lowercased("@type") == "other" &&
           (holds("Type", "time code") || holds("Type", "timecode") || holds("Format", "tc"));
}

Track firstTimecode(const std::vector<Track>& tracks) {
    for (const auto& track : tracks) {
        if (isTimecode(track))
            return track;
    }
    return {};
}

/// The tracks that are asked, each of which may know nothing.
struct Sources {
    explicit Sources(const std::vector<Track>& tracks)
        : all(tracks), general(first(tracks, "general")), video(first(tracks, "video")),
          audio(first(tracks, "audio")), timecode(firstTimecode(tracks)) {}

    /// Of the timecode track, else of the file, else of the picture, else of any track.
    std::optional<std::string> timecodeText(const std::string& key) const {
        for (const auto* track : {&timecode, &general, &video}) {
            if (auto text = track->string(key))
                return text;
        }
        for (const auto& track : all) {
            if (auto text = track.string(key))
                return text;
        }
        return std::nullopt;
    }

    const std::vector<Track>& all;
    const Track general, video, audio, timecode;
};

bool hasDropFrameSign(const std::optional<std::string>& timecode) {
    return timecode && timecode->find(';') != std::string::npos;
}

/// A colon is no statement: many a tool writes it for both ways of counting.
std::optional<bool> dropFrame(const Sources& sources, const std::optional<std::string>& start,
                              const std::optional<std::string>& end) {
    for (const auto* track : {&sources.timecode, &sources.general, &sources.video}) {
        if (const auto flag = track->flag("TimeCode_DropFrame"))
            return flag;
    }
    if (hasDropFrameSign(start) || hasDropFrameSign(end))
        return true;
    return std::nullopt;
}

std::optional<double> timecodeRate(const Sources& sources) {
    for (const auto& rate : {sources.timecode.frameRate(), sources.general.number("TimeCode_Rate"),
                             sources.general.number("FrameRate")}) {
        if (rate)
            return rate;
    }
    return std::nullopt;
}

std::optional<double> seconds(const Sources& sources) {
    for (const auto* track : {&sources.video, &sources.general, &sources.audio}) {
        if (const auto length = track->durationSeconds())
            return length;
    }
    return std::nullopt;
}

/// What the camera itself wrote, under either spelling of its keys.
class CameraFacts {
public:
    explicit CameraFacts(const Track& general) : general_(general) {}

    std::optional<std::string> string(const std::string& key) const {
        return firstOf(general_.string("com_arri_camera_" + key),
                       general_.string("com.arri.camera." + key));
    }

    /// A value above `limit` counts in parts of a whole.
    std::optional<double> scaled(const std::string& key, double limit, double parts) const {
        const auto number = decimalNumber(string(key));
        return number && *number > limit ? *number / parts : number;
    }

    /// In frames or in thousandths of a frame per second.
    std::optional<double> rate(const std::string& key) const {
        const auto number = scaled(key, 1000, 1000);
        return number && *number > 0 ? number : std::nullopt;
    }

private:
    const Track& general_;
};

std::optional<std::string> recordedStamp(const Track& general, const CameraFacts& camera) {
    auto date = camera.string("UserDate");
    const auto time = camera.string("UserTime");
    if (date && time)
        return *date + " " + *time;
    for (const auto* key : {"Encoded_Date", "Recorded_Date", "File_Created_Date", "Tagged_Date"}) {
        if (auto stamp = general.string(key))
            return stamp;
    }
    return date;
}

std::optional<ClipEssence> essence(const Track& general, const Track& video) {
    const CameraFacts camera(general);
    ClipEssence facts;
    facts.codec = firstOf(video.string("Format"), general.string("Video_Format_List"));
    facts.codecProfile = video.string("Format_Profile");
    facts.width = wholeNumber(video.string("Width"));
    facts.height = wholeNumber(video.string("Height"));
    facts.cameraModel = camera.string("CameraModel");
    facts.cameraSerial = camera.string("CameraSerialNumber");
    facts.cameraId = camera.string("CameraId");
    facts.supVersion = camera.string("SupVersion");
    facts.gamma = camera.string("ColorGammaSxS");
    facts.lens = camera.string("LensType");
    facts.sxsSerial = camera.string("SxsSerialNumber");
    facts.lookName = firstOf(camera.string("look_name"), camera.string("look.name"));
    facts.production = camera.string("ProductionInfoProduction");
    facts.location = camera.string("ProductionInfoLocation");
    facts.company = camera.string("ProductionInfoCompany");
    facts.recordedDate = recordedStamp(general, camera);
    facts.whiteBalanceK = wholeNumber(camera.string("WhiteBalanceKelvin"));
    facts.exposureIndex = wholeNumber(camera.string("ExposureIndexAsa"));
    facts.shutterDegrees = camera.scaled("ShutterAngle", 360, 10);
    facts.sensorFps = firstOf(camera.rate("SensorFps"), video.number("FrameRate"));
    facts.projectFps = camera.rate("ProjectFps");
    if (facts.isEmpty())
        return std::nullopt;
    return facts;
}

} // namespace

MediaMetadata metadata(std::string_view bytes) {
    const auto tracks = tracksIn(bytes);
    const Sources sources(tracks);
    const auto start = sources.timecodeText("TimeCode_FirstFrame");
    const auto end = sources.timecodeText("TimeCode_LastFrame");

    MediaMetadata result;
    result.captureFps = firstOf(sources.video.frameRate(), sources.general.number("FrameRate"));
    result.timecodeRate = rateOfTimecode(timecodeRate(sources), result.captureFps);
    result.timecodeDropFrame = dropFrame(sources, start, end);
    result.timecodeStart = TimecodeFormat::normalized(start);
    result.timecodeEnd = TimecodeFormat::normalized(end);
    result.durationTC =
        firstOf(TimecodeFormat::normalized(sources.video.string("Duration_String4")),
                TimecodeFormat::normalized(sources.general.string("Duration_String4")));
    // The tool counts its last timecode, too, from a length that it has rounded.
    countFrames({.pictures = sources.video.frameCount(), .seconds = seconds(sources)}, result);
    result.essence = essence(sources.general, sources.video);
    return result;
}

} // namespace slatewise::MediaInfoJSON
