#include "Offload/MediaInfoCLI/MediaInfoJSON.h"
#include "Require.h"

#include <cmath>

using namespace slatewise;

namespace {

void requireTimecode(const std::optional<std::string>& text) {
    fuzz::require(!text || text == "—" || text->find(':') != std::string::npos);
}

void requireFinite(const std::optional<double>& number) {
    fuzz::require(!number || std::isfinite(*number));
}

} // namespace

/// Whatever the tool prints is read or ignored, and what is read can be written to a manifest.
extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    const auto facts = MediaInfoJSON::metadata({data, size});
    for (const auto& text : {facts.timecodeStart, facts.timecodeEnd, facts.durationTC})
        requireTimecode(text);
    for (const auto& number : {facts.durationSeconds, facts.captureFps, facts.timecodeRate})
        requireFinite(number);
    fuzz::require(!facts.essence || !facts.essence->isEmpty());
    const auto essence = facts.essence.value_or(ClipEssence());
    for (const auto& number : {essence.shutterDegrees, essence.sensorFps, essence.projectFps})
        requireFinite(number);
    return 0;
}
