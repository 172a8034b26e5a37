#include "support/Clips.h"

#include "support/Process.h"

#include <stdexcept>

namespace slatewise::test {

namespace {

std::string littleEndian(std::uint64_t number, int bytes) {
    std::string text;
    for (int at = 0; at < bytes; ++at)
        text += static_cast<char>(number >> (8 * at) & 0xff);
    return text;
}

} // namespace

void makeVideo(const std::filesystem::path& file, const std::string& rate,
               const std::vector<std::string>& options) {
    std::vector<std::string> words = {
        "ffmpeg",   "-v",     "error", "-y",
        "-f",       "lavfi",  "-i",    "testsrc=size=160x96:duration=2:rate=" + rate,
        "-pix_fmt", "yuv420p"};
    words.insert(words.end(), options.begin(), options.end());
    words.push_back(file.native());
    const auto result = run(words);
    if (result.exitCode != 0)
        throw std::runtime_error(result.standardError);
}

std::string wavChunk(const std::string& identifier, const std::string& payload,
                     std::uint64_t claimedSize) {
    return identifier + littleEndian(claimedSize, 4) + payload;
}

std::string wavChunk(const std::string& identifier, const std::string& payload) {
    return wavChunk(identifier, payload, payload.size()) + std::string(payload.size() % 2, '\0');
}

std::string wavFormat(std::uint16_t channels, std::uint32_t samplesPerSecond, std::uint16_t bits) {
    const std::uint64_t frameBytes = std::uint64_t{channels} * ((bits + 7U) / 8U);
    return wavChunk("fmt ", littleEndian(1, 2) + littleEndian(channels, 2) +
                                littleEndian(samplesPerSecond, 4) +
                                littleEndian(samplesPerSecond * frameBytes, 4) +
                                littleEndian(frameBytes, 2) + littleEndian(bits, 2));
}

std::string wavBext(std::uint64_t timeReference) {
    constexpr std::size_t kBeforeReference = 338;
    constexpr std::size_t kBehindReference = 256;
    return wavChunk("bext", std::string(kBeforeReference, '\0') + littleEndian(timeReference, 8) +
                                std::string(kBehindReference, '\0'));
}

std::string wavIXML(const std::string& timecodeRate) {
    return wavChunk("iXML", "<?xml version=\"1.0\"?><BWFXML><SPEED><TIMECODE_RATE>" + timecodeRate +
                                "</TIMECODE_RATE></SPEED></BWFXML>");
}

std::string wavFile(std::initializer_list<std::string> chunks) {
    std::string content = "WAVE";
    for (const auto& chunk : chunks)
        content += chunk;
    return "RIFF" + littleEndian(content.size(), 4) + content;
}

} // namespace slatewise::test
