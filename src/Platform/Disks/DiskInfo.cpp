#include "Platform/Disks/DiskInfo.h"

#include "Platform/Disks/BlockDevices.h"
#include "Platform/Disks/DeviceRecords.h"
#include "Platform/Disks/FileSystemProbe.h"
#include "Platform/Disks/SysfsDisks.h"
#include "Platform/Disks/UDisksClient.h"

#include <memory>

namespace slatewise {

DiskInfo::DiskInfo(DiskSources sources)
    : DiskInfo(std::move(sources), *std::make_unique<DiskMemory>()) {}

DiskInfo::DiskInfo(DiskSources sources, DiskMemory& memory) : sources_(std::move(sources)) {
    const auto told = UDisksClient(sources_.busAddress).objects();
    // Not before: a service that is silent takes its time, in which a card may come.
    mounts_ = MountTable::read(sources_.mountTable);
    DiskMemory::Mounted mounted;
    for (const auto& mount : mounts_) {
        if (const auto numbers = BlockDevices::numbersOf(mount, sources_.sys))
            mounted[identity(mount)] = {.numbers = numbers,
                                        .mountPoint = mount.mountPoint,
                                        .medium =
                                            SysfsDisks::ownMediumNumber(numbers, sources_.sys)};
    }
    service_ = memory.update(mounted, told);
}

const Mount* DiskInfo::mountAt(const std::filesystem::path& path) const {
    return MountTable::at(mounts_, path);
}

const Mount* DiskInfo::mountHolding(const std::filesystem::path& path) const {
    return MountTable::holding(mounts_, path);
}

std::string DiskInfo::identity(const Mount& mount) const {
    // Another card that was put into the same slot in the meantime may have the very same line.
    const auto device = BlockDevices::numbersOf(mount, sources_.sys);
    return mount.line + " " + SysfsDisks::mediumNumber(device, sources_.sys);
}

std::optional<DiskFacts> DiskInfo::facts(const Mount& mount) const {
    auto facts = factsWithoutReading(mount);
    if (facts && facts->fileSystem.empty() && !service_.answers.contains(identity(mount)))
        FileSystemProbe::addTo(*facts, sources_.devices / facts->deviceName);
    return facts;
}

std::optional<DiskFacts> DiskInfo::factsWithoutReading(const Mount& mount) const {
    const auto device = BlockDevices::numbersOf(mount, sources_.sys);
    if (device == 0)
        return std::nullopt;
    auto kernels = SysfsDisks::facts(device, sources_.sys);
    const auto answer = service_.answers.find(identity(mount));
    if (answer == service_.answers.end()) {
        if (kernels)
            DeviceRecords::addTo(*kernels, device, sources_.sys, sources_.deviceRecords);
        return kernels;
    }
    auto facts = answer->second;
    // The service tells apart only buses with a plug for everybody.
    if (kernels && facts.bus == DiskBus::Unknown) {
        facts.bus = kernels->bus;
        facts.hasRemovableMedia |= kernels->hasRemovableMedia;
    }
    return facts;
}

bool DiskInfo::isAwaited(const Mount& mount) const {
    return service_.awaited.contains(identity(mount));
}

void DiskInfo::giveUp(const Mount& mount, DiskMemory& memory) {
    const auto name = identity(mount);
    service_.awaited.erase(name);
    if (auto said = memory.giveUp(name))
        service_.answers.insert_or_assign(name, std::move(*said));
}

} // namespace slatewise
