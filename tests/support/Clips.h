#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

/// Recordings for tests: small ones made by ffmpeg, and WAV files put together from their chunks.
namespace slatewise::test {

/// Two seconds of a test picture, encoded as `options` say.
void makeVideo(const std::filesystem::path& file, const std::string& rate,
               const std::vector<std::string>& options);

/// `claimedSize` stands in the header in place of the payload's size.
std::string wavChunk(const std::string& identifier, const std::string& payload,
                     std::uint64_t claimedSize);
std::string wavChunk(const std::string& identifier, const std::string& payload);

std::string wavFormat(std::uint16_t channels, std::uint32_t samplesPerSecond, std::uint16_t bits);

/// A broadcast extension; the take began so many samples after midnight.
std::string wavBext(std::uint64_t timeReference);

/// What a recorder says of the set's speed.
std::string wavIXML(const std::string& timecodeRate);

std::string wavFile(std::initializer_list<std::string> chunks);

} // namespace slatewise::test
