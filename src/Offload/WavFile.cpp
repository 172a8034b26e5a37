#include "Offload/WavFile.h"

#include "Offload/TimecodeFormat.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Numbers.h"
#include "Platform/Text.h"

#include <fcntl.h>

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace slatewise::WavFile {

namespace {

/// No recorder writes as much; what lies behind it in a chunk is not looked at.
constexpr std::size_t kLongestPayload = std::size_t(1) << 20;
constexpr std::uint64_t kChunkHeaderBytes = 8;

using Bytes = std::span<const char>;

template <std::size_t count>
std::uint64_t littleEndian(Bytes bytes, std::size_t offset) {
    std::uint64_t number = 0;
    for (std::size_t at = count; at-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[offset + at]);
    return number;
}

/// A file open for reading here and there. One that is no regular file, or not to be opened, has no
/// bytes.
class Source {
public:
    explicit Source(const std::filesystem::path& path)
        : file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
        if (!file_)
            return;
        const auto attributes =
            FileSystem::attributesIfAny("/proc/self/fd/" + std::to_string(file_.get()));
        if (attributes && attributes->type == FileSystem::ItemType::RegularFile)
            size_ = static_cast<std::uint64_t>(attributes->sizeBytes);
    }

    std::uint64_t size() const { return size_; }

    /// Fewer bytes than asked for where the file ends or cannot be read.
    std::vector<char> read(std::uint64_t offset, std::uint64_t count) const {
        std::vector<char> bytes(static_cast<std::size_t>(count));
        std::size_t done = 0;
        while (done < bytes.size()) {
            const auto got = ::pread(file_.get(), bytes.data() + done, bytes.size() - done,
                                     static_cast<off_t>(offset + done));
            if (got <= 0)
                break;
            done += static_cast<std::size_t>(got);
        }
        bytes.resize(done);
        return bytes;
    }

private:
    FileDescriptor file_;
    std::uint64_t size_ = 0;
};

/// What the chunks of one file say.
struct Facts {
    std::optional<std::uint64_t> channels, samplesPerSecond, frameBytes, bitsPerSample, dataBytes;
    /// Of a file whose sound may be longer than the size in its chunk can tell.
    std::optional<std::uint64_t> longDataBytes;
    /// Samples since midnight.
    std::optional<std::uint64_t> timeReference;
    Speed speed;
};

void takeLongSizes(Bytes chunk, Facts& facts) {
    constexpr std::size_t kDataSizeOffset = 8;
    constexpr std::size_t kLeastBytes = kDataSizeOffset + sizeof(std::uint64_t);
    if (chunk.size() >= kLeastBytes)
        facts.longDataBytes = littleEndian<8>(chunk, kDataSizeOffset);
}

void takeFormat(Bytes chunk, Facts& facts) {
    constexpr std::size_t kLeastBytes = 16;
    if (chunk.size() < kLeastBytes)
        return;
    facts.channels = littleEndian<2>(chunk, 2);
    facts.samplesPerSecond = littleEndian<4>(chunk, 4);
    facts.frameBytes = littleEndian<2>(chunk, 12);
    facts.bitsPerSample = littleEndian<2>(chunk, 14);
}

void takeBroadcastExtension(Bytes chunk, Facts& facts) {
    constexpr std::size_t kTimeReferenceOffset = 338;
    constexpr std::size_t kLeastBytes = kTimeReferenceOffset + sizeof(std::uint64_t);
    if (chunk.size() >= kLeastBytes)
        facts.timeReference = littleEndian<8>(chunk, kTimeReferenceOffset);
}

void takeSpeed(Bytes chunk, Facts& facts) {
    const auto speed = speedIn({chunk.data(), chunk.size()});
    if (speed.timecodeRate)
        facts.speed.timecodeRate = speed.timecodeRate;
    if (speed.dropFrame)
        facts.speed.dropFrame = speed.dropFrame;
}

void takeChunk(const Source& source, std::string_view identifier, std::uint64_t offset,
               std::uint64_t size, Facts& facts) {
    const auto payload = [&] {
        return source.read(offset, std::min<std::uint64_t>(size, kLongestPayload));
    };
    if (identifier == "data")
        facts.dataBytes = size;
    else if (identifier == "ds64")
        takeLongSizes(payload(), facts);
    else if (identifier == "fmt ")
        takeFormat(payload(), facts);
    else if (identifier == "bext")
        takeBroadcastExtension(payload(), facts);
    else if (identifier == "iXML" || identifier == "ixml")
        takeSpeed(payload(), facts);
}

bool isWave(const Source& source) {
    const auto start = source.read(0, 4);
    const std::string_view kind(start.data(), start.size());
    return kind == "RIFF" || kind == "RF64" || kind == "BW64";
}

/// The size in a header, or the one told before that it stands for.
std::uint64_t sizeOf(Bytes header, const Facts& facts) {
    constexpr std::uint64_t kToldBefore = 0xffff'ffff;
    const auto size = littleEndian<4>(header, 4);
    const bool isData = std::string_view(header.data(), 4) == "data";
    return isData && size == kToldBefore ? facts.longDataBytes.value_or(size) : size;
}

Facts read(const Source& source) {
    constexpr std::uint64_t kLeastBytes = 45;
    constexpr std::uint64_t kFirstChunk = 12;
    Facts facts;
    if (source.size() < kLeastBytes || !isWave(source))
        return facts;
    // A file of nothing but empty chunks is no reason to read all of it.
    constexpr int kMostChunks = 10'000;
    std::uint64_t offset = kFirstChunk;
    for (int chunk = 0; chunk < kMostChunks && offset + kChunkHeaderBytes <= source.size();
         ++chunk) {
        const auto header = source.read(offset, kChunkHeaderBytes);
        if (header.size() < kChunkHeaderBytes)
            break;
        const auto size = sizeOf(header, facts);
        offset += kChunkHeaderBytes;
        if (size > source.size() - offset)
            break;
        takeChunk(source, {header.data(), 4}, offset, size, facts);
        offset += size + size % 2;
    }
    return facts;
}

/// Of each channel.
std::optional<std::uint64_t> samples(const Facts& facts) {
    if (!facts.channels || !facts.bitsPerSample || !facts.dataBytes ||
        facts.samplesPerSecond.value_or(0) == 0)
        return std::nullopt;
    constexpr std::uint64_t kBitsPerByte = 8;
    const auto filled = *facts.channels * *facts.bitsPerSample / kBitsPerByte;
    // A sample of 20 bits has three bytes to itself.
    const auto whole = *facts.channels * ((*facts.bitsPerSample + kBitsPerByte - 1) / kBitsPerByte);
    return *facts.dataBytes /
           std::max<std::uint64_t>(facts.frameBytes == whole ? whole : filled, 1);
}

std::string_view between(std::string_view text, std::string_view open, std::string_view close) {
    const auto from = text.find(open);
    if (from == std::string_view::npos)
        return {};
    text.remove_prefix(from + open.size());
    const auto to = text.find(close);
    return to == std::string_view::npos ? std::string_view() : text.substr(0, to);
}

std::string asciiUppercased(std::string_view text) {
    std::string result(text);
    for (char& character : result) {
        if (character >= 'a' && character <= 'z')
            character = static_cast<char>(character - 'a' + 'A');
    }
    return result;
}

/// "25", "25000" in thousandths, or the exact fraction that most recorders write: "24000/1001".
std::optional<double> rateIn(std::string_view text) {
    constexpr double kInThousandths = 1000;
    auto rate = Numbers::decimal(text);
    if (!rate)
        rate = Numbers::quotient(text);
    else if (*rate > kInThousandths)
        rate = *rate / kInThousandths;
    return rate && *rate > 0 ? rate : std::nullopt;
}

} // namespace

MediaMetadata timing(const std::filesystem::path& file) {
    const auto facts = read(Source(file));
    const auto length = samples(facts);
    const auto perSecond = facts.samplesPerSecond.value_or(0);
    MediaMetadata result;
    if (length)
        result.durationSeconds =
            Numbers::rounded(static_cast<double>(*length) / static_cast<double>(perSecond), 2);
    result.timecodeDropFrame = facts.speed.dropFrame;
    result.timecodeRate = facts.speed.timecodeRate;
    const auto rate = result.timecodeRate ? FrameRate::near(*result.timecodeRate) : std::nullopt;
    if (!rate || !facts.timeReference)
        return result;
    const auto start = TimecodeFormat::framesIn(*facts.timeReference, perSecond, *rate);
    if (!start)
        return result;
    const auto counting = TimecodeFormat::countingOf(result.timecodeDropFrame);
    result.timecodeStart = TimecodeFormat::text(*start, *rate, counting);
    const auto frames = length ? TimecodeFormat::framesIn(*length, perSecond, *rate) : std::nullopt;
    if (!frames)
        return result;
    result.durationTC = TimecodeFormat::text(*frames, *rate, counting);
    result.timecodeEnd = TimecodeFormat::lastFrame(*result.timecodeStart, *frames, *rate, counting);
    return result;
}

Speed speedIn(std::string_view iXML) {
    const auto text = asciiUppercased(iXML);
    const auto holds = [&](std::string_view word) {
        return text.find(word) != std::string::npos;
    };
    Speed result;

    result.timecodeRate =
        rateIn(Text::trimmed(between(text, "<TIMECODE_RATE>", "</TIMECODE_RATE>")));

    if (holds("DF") && holds("DROP"))
        result.dropFrame = holds("<SPEED>DF") || holds("DROPFRAME");
    if (holds("<TIMECODE_FLAG>DF"))
        result.dropFrame = true;
    if (holds("<TIMECODE_FLAG>NDF"))
        result.dropFrame = false;
    return result;
}

} // namespace slatewise::WavFile
