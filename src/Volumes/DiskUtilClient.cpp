#include "Volumes/DiskUtilClient.h"

#include "Language/L10n.h"
#include "Platform/Disks/BlockDevices.h"
#include "Platform/Disks/DiskInfo.h"
#include "Platform/Disks/SysfsDisks.h"
#include "Platform/Disks/UDisksClient.h"
#include "Platform/Disks/Umount.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"
#include "Volumes/CameraSignatures.h"
#include "Volumes/DiskWords.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <iterator>
#include <set>
#include <unistd.h>

namespace slatewise::DiskUtilClient {

namespace {

std::string lastComponent(const std::filesystem::path& path) {
    const auto plain = path.has_filename() ? path : path.parent_path();
    return plain.has_filename() ? plain.filename().native() : plain.native();
}

/// Two subvolumes of one file system have its label in common.
std::string nameOf(const VolumeFacts& facts, const std::string& label) {
    auto name = Text::trimmed(label);
    if (name.empty())
        name = lastComponent(facts.mountPoint);
    return facts.mountedPart.empty() ? name : name + " [" + facts.mountedPart.substr(1) + "]";
}

/// As findmnt tells apart what is mounted of one device.
std::string identifierOf(const VolumeFacts& facts, const DiskFacts& disk) {
    return facts.mountedPart.empty() ? disk.deviceName
                                     : disk.deviceName + "[" + facts.mountedPart + "]";
}

WriteObstacle obstacleOf(const std::filesystem::path& folder) {
    if (::faccessat(AT_FDCWD, folder.c_str(), W_OK, AT_EACCESS) == 0)
        return WriteObstacle::None;
    if (errno == EROFS)
        return WriteObstacle::ReadOnly;
    return errno == EACCES || errno == EPERM ? WriteObstacle::NoPermission
                                             : WriteObstacle::NoAnswer;
}

std::filesystem::path withoutLinks(const std::filesystem::path& path) {
    std::error_code failure;
    auto result = std::filesystem::canonical(path, failure);
    return failure ? path : result;
}

/// Nothing when the service is not there or cannot unmount what is at that very path and no more.
std::optional<EjectPlan> ejectPlan(dev_t device, const DiskSources& sources) {
    const auto objects = UDisksClient(sources.busAddress).objects();
    return objects ? objects->ejectPlan(device) : std::nullopt;
}

/// Whether anything else of the disk is mounted, be it the same volume at another place.
bool isDiskInUseBeside(const Mount& mount, const std::vector<Mount>& mounts,
                       const DiskSources& sources) {
    const auto diskOf = [&](const Mount& each) {
        return SysfsDisks::diskUnder(BlockDevices::numbersOf(each, sources.sys), sources.sys);
    };
    const auto disk = diskOf(mount);
    return !disk.empty() && std::any_of(mounts.begin(), mounts.end(), [&](const Mount& other) {
        return other.mountPoint != mount.mountPoint && diskOf(other) == disk;
    });
}

EjectError::Cause causeOf(const UDisksError& refusal) {
    constexpr std::string_view kPrefix = "org.freedesktop.UDisks2.Error.";
    const auto& name = refusal.name();
    if (name == std::string(kPrefix) + "DeviceBusy")
        return EjectError::Cause::Busy;
    return name.starts_with(std::string(kPrefix) + "NotAuthorized")
               ? EjectError::Cause::NotPermitted
               : EjectError::Cause::Other;
}

EjectError::Cause causeOf(const Umount::Result& refusal) {
    const auto says = [&](std::string_view words) {
        return refusal.words.find(words) != std::string::npos;
    };
    if (says("target is busy"))
        return EjectError::Cause::Busy;
    return says("must be superuser") || says("not permitted") || says("ermission denied")
               ? EjectError::Cause::NotPermitted
               : EjectError::Cause::Other;
}

/// Gives what failed after the unmounting, in the service's words.
std::string ejectByService(const std::filesystem::path& mountPoint, const EjectPlan& plan,
                           const DiskSources& sources) {
    constexpr int kRefused = 1;
    const UDisksClient service(sources.busAddress);
    try {
        service.unmount(plan);
    } catch (const UDisksError& refusal) {
        throw EjectError(mountPoint, kRefused, refusal.what(), causeOf(refusal));
    }
    try {
        service.release(plan);
    } catch (const UDisksError& refusal) {
        // It is unmounted, and that is what counts for whoever pulls it.
        return refusal.what();
    }
    return {};
}

/// Empty when the folder cannot be listed.
std::vector<std::filesystem::path> foldersIn(const std::filesystem::path& root) {
    std::vector<std::filesystem::path> folders;
    std::error_code failure;
    std::filesystem::directory_iterator entry(root, failure);
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
        const bool isHidden = entry->path().filename().native().starts_with('.');
        std::error_code unknown;
        // The listing tells the type by itself, so that a dead file system is not waited for.
        if (!isHidden && !entry->is_symlink(unknown) && entry->is_directory(unknown))
            folders.push_back(entry->path());
    }
    if (failure)
        folders.clear();
    return folders;
}

} // namespace

std::vector<std::filesystem::path> listMounts(const VolumesRoot& volumesRoot) {
    std::vector<std::filesystem::path> mounts;
    std::set<std::filesystem::path> listed;
    for (const auto& root : volumesRoot.paths()) {
        if (listed.insert(withoutLinks(root)).second)
            std::ranges::move(foldersIn(root), std::back_inserter(mounts));
    }
    return mounts;
}

VolumeFacts factsFrom(const std::filesystem::path& mountPoint, const Mount* mount,
                      const std::optional<DiskFacts>& disk) {
    VolumeFacts facts;
    facts.mountPoint = mountPoint;
    if (mount && mount->isReadOnly)
        facts.writeObstacle = WriteObstacle::ReadOnly;
    if (!mount || !disk) {
        facts.volumeName = lastComponent(mountPoint);
        return facts;
    }
    if (mount->root != "/")
        facts.mountedPart = mount->root;
    if (disk->isReadOnly)
        facts.writeObstacle = WriteObstacle::ReadOnly;
    facts.volumeName = nameOf(facts, disk->label);
    facts.deviceIdentifier = identifierOf(facts, *disk);
    if (!disk->uuid.empty())
        facts.volumeUUID = disk->uuid;
    facts.fileSystem = DiskWords::fileSystem(*mount, *disk);
    facts.protocolName = DiskWords::bus(disk->bus);
    // A Btrfs can span devices, and then one of them says nothing of its size.
    if (mount->fileSystem != "btrfs")
        facts.totalBytes = disk->sizeBytes;
    facts.isInternal = DiskWords::isInternal(*disk);
    facts.isExternal = !facts.isInternal && disk->bus != DiskBus::SecureDigital;
    facts.isRemovable =
        disk->isRemovable || disk->hasRemovableMedia || disk->bus == DiskBus::DiskImage;
    return facts;
}

void lookInto(VolumeFacts& facts) {
    facts.identity = FolderIdentity::at(facts.mountPoint);
    facts.signatures = CameraSignatures::detect(facts.mountPoint);
    const auto capacity = FileSystem::volumeCapacity(facts.mountPoint);
    if (facts.totalBytes < 1)
        facts.totalBytes = capacity.total;
    if (facts.freeBytes < 1)
        facts.freeBytes = capacity.free;
    if (facts.isWritable())
        facts.writeObstacle = obstacleOf(facts.mountPoint);
}

VolumeFacts facts(const std::filesystem::path& path, const DiskSources& sources) {
    const DiskInfo disks(sources);
    const auto* mount = disks.mountHolding(withoutLinks(path));
    auto facts = factsFrom(path, mount, mount ? disks.facts(*mount) : std::nullopt);
    lookInto(facts);
    return facts;
}

EjectError::EjectError(const std::filesystem::path& mountPoint, int code, std::string reason,
                       Cause cause)
    : Error(L10n::current().ejectFailed(Text::displayable(mountPoint.native()))), code_(code),
      reason_(std::move(reason)), cause_(cause) {}

std::string Ejected::text(std::string_view name, L10n l10n) const {
    return isDiskInUse ? l10n.unmountedButInUse(name) : l10n.safeToPull(name);
}

Ejected eject(const std::filesystem::path& mountPoint, const DiskSources& sources) {
    const auto mounts = MountTable::read(sources.mountTable);
    const auto* mount = MountTable::at(mounts, withoutLinks(mountPoint));
    Ejected result;
    result.isDiskInUse = mount && isDiskInUseBeside(*mount, mounts, sources);
    const auto device = mount ? BlockDevices::numbersOf(*mount, sources.sys) : 0;
    if (const auto plan = device == 0 ? std::nullopt : ejectPlan(device, sources)) {
        result.isDiskInUse |= plan->driveStep == EjectPlan::Drive::InUse;
        result.remark = ejectByService(mountPoint, *plan, sources);
    } else if (const auto refusal = Umount::run(mountPoint); refusal.status != 0) {
        throw EjectError(mountPoint, refusal.status, refusal.words, causeOf(refusal));
    }
    return result;
}

} // namespace slatewise::DiskUtilClient
