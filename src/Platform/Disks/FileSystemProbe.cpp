#include "Platform/Disks/FileSystemProbe.h"

#include <blkid.h>

#include <memory>

namespace slatewise::FileSystemProbe {

namespace {

struct ProbeEnd {
    void operator()(blkid_probe probe) const { blkid_free_probe(probe); }
};
using Probe = std::unique_ptr<blkid_struct_probe, ProbeEnd>;

void take(const Probe& probe, const char* name, std::string& result) {
    const char* value = nullptr;
    if (blkid_probe_lookup_value(probe.get(), name, &value, nullptr) == 0)
        result = value;
}

} // namespace

void addTo(DiskFacts& facts, const std::filesystem::path& device) {
    const Probe probe(blkid_new_probe_from_filename(device.c_str()));
    if (!probe)
        return;
    blkid_probe_enable_superblocks(probe.get(), 1);
    blkid_probe_set_superblocks_flags(probe.get(), BLKID_SUBLKS_LABEL | BLKID_SUBLKS_UUID |
                                                       BLKID_SUBLKS_TYPE | BLKID_SUBLKS_VERSION);
    if (blkid_do_safeprobe(probe.get()) != 0)
        return;
    take(probe, "LABEL", facts.label);
    take(probe, "UUID", facts.uuid);
    take(probe, "TYPE", facts.fileSystem);
    take(probe, "VERSION", facts.fileSystemVersion);
}

} // namespace slatewise::FileSystemProbe
