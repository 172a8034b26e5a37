#include "Volumes/DiskUtilClient.h"

#include "Language/L10n.h"
#include "Platform/Disks/BlockDevices.h"
#include "Platform/Disks/DiskInfo.h"
#include "Platform/Disks/UDisksClient.h"
#include "Platform/Disks/Umount.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"
#include "Volumes/CameraSignatures.h"
#include "Volumes/PropertyReaders.h"

#include <algorithm>

namespace slatewise::DiskUtilClient {

namespace {

using Keys = std::initializer_list<const char*>;

const PropertyValue* find(const PropertyList& plist, const char* key) {
    const auto found = plist.find(key);
    return found == plist.end() ? nullptr : &found->second;
}

std::string firstText(const PropertyList& plist, Keys keys) {
    for (const char* key : keys) {
        if (auto text = PropertyReaders::string(find(plist, key)))
            return std::move(*text);
    }
    return {};
}

std::int64_t firstPositive(const PropertyList& plist, Keys keys) {
    for (const char* key : keys) {
        if (const auto number = PropertyReaders::int64(find(plist, key)); number > 0)
            return number;
    }
    return 0;
}

bool anyTrue(const PropertyList& plist, Keys keys) {
    return std::any_of(keys.begin(), keys.end(),
                       [&](const char* key) { return PropertyReaders::boolean(find(plist, key)); });
}

std::string lastComponent(const std::filesystem::path& path) {
    const auto plain = path.has_filename() ? path : path.parent_path();
    return plain.has_filename() ? plain.filename().native() : plain.native();
}

/// What only the file system itself can tell.
void addFromFileSystem(VolumeFacts& facts) {
    facts.signatures = CameraSignatures::detect(facts.mountPoint);
    const auto capacity = FileSystem::volumeCapacity(facts.mountPoint);
    if (facts.totalBytes < 1)
        facts.totalBytes = capacity.total;
    if (facts.freeBytes < 1)
        facts.freeBytes = capacity.free;
}

std::filesystem::path withoutLinks(const std::filesystem::path& path) {
    std::error_code failure;
    auto result = std::filesystem::canonical(path, failure);
    return failure ? path : result;
}

/// Nothing when the service is not there or cannot unmount what is at that very path and no more.
std::optional<EjectPlan> ejectPlan(const std::filesystem::path& mountPoint,
                                   const DiskSources& sources) {
    const auto mounts = MountTable::read(sources.mountTable);
    const auto* mount = MountTable::at(mounts, withoutLinks(mountPoint));
    const auto objects = mount ? UDisksClient(sources.busAddress).objects() : std::nullopt;
    return objects ? objects->ejectPlan(BlockDevices::numbersOf(*mount, sources.sys))
                   : std::nullopt;
}

void ejectByService(const std::filesystem::path& mountPoint, const EjectPlan& plan,
                    const DiskSources& sources) {
    constexpr int kRefused = 1;
    try {
        UDisksClient(sources.busAddress).eject(plan);
    } catch (const UDisksError& refusal) {
        throw EjectError(mountPoint, kRefused, refusal.what());
    }
}

} // namespace

std::vector<std::filesystem::path> listMounts(const std::filesystem::path& volumesRoot) {
    std::vector<std::filesystem::path> mounts;
    std::error_code failure;
    std::filesystem::directory_iterator entry(volumesRoot, failure);
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
        const bool isHidden = entry->path().filename().native().starts_with('.');
        std::error_code unknown;
        // The listing tells the type by itself, so that a dead file system is not waited for.
        if (!isHidden && !entry->is_symlink(unknown) && entry->is_directory(unknown))
            mounts.push_back(entry->path());
    }
    if (failure)
        mounts.clear();
    return mounts;
}

std::optional<PropertyList> infoPlist(const std::filesystem::path& path,
                                      const DiskSources& sources) {
    return DiskInfo(sources).properties(withoutLinks(path));
}

VolumeFacts factsFromPlist(const PropertyList& plist, const std::filesystem::path& mountPoint) {
    VolumeFacts facts{
        .mountPoint = mountPoint,
        .volumeName = firstText(plist, {"VolumeName"}),
        .deviceIdentifier = firstText(plist, {"DeviceIdentifier"}),
        .volumeUUID = PropertyReaders::string(find(plist, "VolumeUUID")),
        .fileSystem =
            firstText(plist, {"FilesystemName", "FileSystemName", "FilesystemUserVisibleName"}),
        .protocolName = firstText(plist, {"BusProtocol", "Protocol"}),
        .totalBytes =
            firstPositive(plist, {"TotalSize", "Size", "VolumeSize", "APFSContainerSize"}),
        .freeBytes =
            firstPositive(plist, {"VolumeFreeSpace", "FreeSpace", "APFSContainerFreeSpace"}),
        .isInternal = anyTrue(plist, {"Internal"}),
        .isRemovable = anyTrue(plist, {"Removable", "RemovableMedia"}),
        .isExternal = anyTrue(plist, {"External"}),
        .isWritable = true,
        .signatures = {}};
    if (facts.volumeName.empty())
        facts.volumeName = lastComponent(mountPoint);
    if (const auto* writable = find(plist, "Writable"); writable && std::get_if<bool>(writable))
        facts.isWritable = std::get<bool>(*writable);
    addFromFileSystem(facts);
    return facts;
}

VolumeFacts plainFacts(const std::filesystem::path& mountPoint) {
    VolumeFacts facts;
    facts.mountPoint = mountPoint;
    facts.volumeName = lastComponent(mountPoint);
    facts.isWritable = true;
    return facts;
}

VolumeFacts facts(const std::filesystem::path& path, const DiskSources& sources) {
    return factsFromPlist(infoPlist(path, sources).value_or(PropertyList()), path);
}

EjectError::EjectError(const std::filesystem::path& mountPoint, int code, std::string reason)
    : Error(L10n::current().ejectFailed(Text::displayable(mountPoint.native()))), code_(code),
      reason_(std::move(reason)) {}

void eject(const std::filesystem::path& mountPoint, const DiskSources& sources) {
    if (const auto plan = ejectPlan(mountPoint, sources))
        ejectByService(mountPoint, *plan, sources);
    else if (const int status = Umount::run(mountPoint))
        throw EjectError(mountPoint, status, "umount gave " + std::to_string(status));
}

} // namespace slatewise::DiskUtilClient
