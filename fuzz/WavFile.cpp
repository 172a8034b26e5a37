#include "Offload/WavFile.h"
#include "Platform/FileDescriptor.h"
#include "Require.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <string>

using namespace slatewise;

/// Whatever bears the name of a WAV file is read or ignored.
extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    static const FileDescriptor file(::memfd_create("take.wav", MFD_CLOEXEC));
    fuzz::require(::ftruncate(file.get(), 0) == 0);
    fuzz::require(::pwrite(file.get(), data, size, 0) == static_cast<ssize_t>(size));
    const auto facts = WavFile::timing("/proc/self/fd/" + std::to_string(file.get()));
    fuzz::require(!facts.durationSeconds || *facts.durationSeconds >= 0);
    fuzz::require(!facts.timecodeRate ||
                  (*facts.timecodeRate > 0 && std::isfinite(*facts.timecodeRate)));
    fuzz::require(!facts.timecodeStart || facts.timecodeStart->size() >= 11);
    fuzz::require(!facts.timecodeEnd || facts.timecodeStart);
    return 0;
}
