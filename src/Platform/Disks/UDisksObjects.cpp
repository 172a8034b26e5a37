#include "Platform/Disks/UDisksObjects.h"

#include <QByteArrayList>
#include <QDBusArgument>

#include <algorithm>

namespace slatewise {

namespace {

constexpr auto kBlock = "org.freedesktop.UDisks2.Block";
constexpr auto kDrive = "org.freedesktop.UDisks2.Drive";
constexpr auto kEncrypted = "org.freedesktop.UDisks2.Encrypted";
constexpr auto kFilesystem = "org.freedesktop.UDisks2.Filesystem";
constexpr auto kLoop = "org.freedesktop.UDisks2.Loop";
constexpr auto kPartition = "org.freedesktop.UDisks2.Partition";

/// The service ends file names with a zero byte.
std::string fileName(const QByteArray& told) {
    return told.constData();
}

/// "/dev/sdb1" without its folder.
std::string deviceName(const QByteArray& file) {
    const auto name = fileName(file);
    constexpr std::string_view kFolder = "/dev/";
    return name.starts_with(kFolder) ? name.substr(kFolder.size()) : name;
}

DiskBus busNamed(const QString& name) {
    if (name == "usb")
        return DiskBus::Usb;
    if (name == "sdio")
        return DiskBus::SecureDigital;
    return name == "ieee1394" ? DiskBus::FireWire : DiskBus::Unknown;
}

} // namespace

UDisksObjects::UDisksObjects(Objects objects) : objects_(std::move(objects)) {
    for (auto entry = objects_.cbegin(); entry != objects_.cend(); ++entry) {
        const auto block = entry->constFind(kBlock);
        if (block != entry->cend())
            blocks_[block->value("DeviceNumber").toULongLong()] = entry.key().path();
    }
}

std::optional<DiskFacts> UDisksObjects::facts(const MountedDevice& mounted) const {
    const auto object = blocks_.value(mounted.numbers);
    if (object.isEmpty() || isOfAnotherMedium(object, mounted.medium))
        return std::nullopt;
    // A service that is just starting may know the partition and not yet the drive.
    const auto drive = driveOf(object);
    if (!drive.isEmpty() && !interface(drive, kDrive))
        return std::nullopt;
    const auto& block = *interface(object, kBlock);
    const auto text = [&](const char* name) {
        return block.value(name).toString().toStdString();
    };
    DiskFacts facts;
    facts.deviceName = deviceName(block.value("Device").toByteArray());
    facts.label = text("IdLabel");
    facts.uuid = text("IdUUID");
    facts.fileSystem = text("IdType");
    facts.fileSystemVersion = text("IdVersion");
    facts.sizeBytes = block.value("Size").toLongLong();
    facts.isReadOnly = block.value("ReadOnly").toBool();

    const auto below = blockBelow(object);
    facts.isSystemDisk = property(below, kBlock, "HintSystem").toBool();
    if (isImage(below)) {
        facts.bus = DiskBus::DiskImage;
        return facts;
    }
    facts.bus = busNamed(property(drive, kDrive, "ConnectionBus").toString());
    facts.isRemovable = property(drive, kDrive, "Removable").toBool();
    facts.hasRemovableMedia = property(drive, kDrive, "MediaRemovable").toBool();
    if (facts.bus == DiskBus::SecureDigital) {
        // Neither the kernel nor the service tells cards from chips that are soldered in by these.
        facts.hasRemovableMedia = property(drive, kDrive, "Media").toString() != "flash_mmc";
        facts.isRemovable = facts.hasRemovableMedia;
    }
    return facts;
}

bool UDisksObjects::isUpToDate(const MountedDevice& mounted) const {
    const auto object = blocks_.value(mounted.numbers);
    if (property(object, kBlock, "IdUsage").toString() != "filesystem")
        return false;
    const auto places = fileNames(object, kFilesystem, "MountPoints");
    return std::find(places.begin(), places.end(), mounted.mountPoint.native()) != places.end();
}

std::optional<EjectPlan> UDisksObjects::ejectPlan(dev_t numbers) const {
    const auto object = blocks_.value(numbers);
    // The service unmounts a device wherever it chooses, and not the place that somebody asked for.
    if (object.isEmpty() || !interface(object, kFilesystem) || mountCount(object) > 1)
        return std::nullopt;
    EjectPlan plan{.fileSystem = object, .encrypted = {}, .drive = driveOf(object)};
    const auto drive = plan.drive;
    if (const auto below = blockBelow(object); interface(below, kEncrypted))
        plan.encrypted = below;
    if (drive.isEmpty())
        return plan;
    if (isInUseBeside(object, drive))
        plan.driveStep = EjectPlan::Drive::InUse;
    else if (understandsEject(object, drive))
        plan.driveStep = EjectPlan::Drive::Eject;
    else if (isHousingInUseBeside(object, drive))
        plan.driveStep = property(drive, kDrive, "MediaRemovable").toBool()
                             ? EjectPlan::Drive::LeaveAlone
                             : EjectPlan::Drive::InUse;
    else if (property(drive, kDrive, "CanPowerOff").toBool())
        plan.driveStep = EjectPlan::Drive::PowerOff;
    return plan;
}

/// Null when the object does not have it.
const QVariantMap* UDisksObjects::interface(const QString& object, const char* name) const {
    if (object.isEmpty())
        return nullptr;
    const auto interfaces = objects_.constFind(QDBusObjectPath(object));
    if (interfaces == objects_.cend())
        return nullptr;
    const auto found = interfaces->constFind(name);
    return found == interfaces->cend() ? nullptr : &*found;
}

QVariant UDisksObjects::property(const QString& object, const char* interfaceName,
                                 const char* name) const {
    const auto* properties = interface(object, interfaceName);
    return properties ? properties->value(name) : QVariant();
}

/// The path of another object, empty when there is none, for which the service says "/".
QString UDisksObjects::referred(const QString& object, const char* interfaceName,
                                const char* name) const {
    const auto path = property(object, interfaceName, name).value<QDBusObjectPath>().path();
    return path == "/" ? QString() : path;
}

/// The block that an opened encrypted one was opened from; itself when it is none.
QString UDisksObjects::blockBelow(const QString& block) const {
    const auto below = referred(block, kBlock, "CryptoBackingDevice");
    return below.isEmpty() || !interface(below, kBlock) ? block : below;
}

/// Empty when there is none, as for an image or an array.
QString UDisksObjects::driveOf(const QString& block) const {
    return referred(blockBelow(block), kBlock, "Drive");
}

bool UDisksObjects::isImage(const QString& block) const {
    const auto table = referred(block, kPartition, "Table");
    return interface(table.isEmpty() ? block : table, kLoop) != nullptr;
}

/// The command is one of SCSI, which USB and optical drives speak.
bool UDisksObjects::understandsEject(const QString& block, const QString& drive) const {
    const auto device = deviceName(property(blockBelow(block), kBlock, "Device").toByteArray());
    const bool speaksScsi = device.starts_with("sd") || device.starts_with("sr");
    return speaksScsi && (property(drive, kDrive, "Ejectable").toBool() ||
                          property(drive, kDrive, "MediaRemovable").toBool());
}

std::vector<std::string> UDisksObjects::fileNames(const QString& block, const char* interfaceName,
                                                  const char* name) const {
    std::vector<std::string> names;
    // A list within a list stays as it came over the bus until somebody says what it is.
    for (const auto& told : qdbus_cast<QByteArrayList>(property(block, interfaceName, name)))
        names.push_back(fileName(told));
    return names;
}

/// The number of the medium is in one of the other names of a device, for most kinds.
bool UDisksObjects::isOfAnotherMedium(const QString& block, const std::string& medium) const {
    constexpr std::string_view kNumbered = "/dev/disk/by-diskseq/";
    const auto table = referred(block, kPartition, "Table");
    const auto names = fileNames(table.isEmpty() ? block : table, kBlock, "Symlinks");
    return !medium.empty() && std::any_of(names.begin(), names.end(), [&](const auto& name) {
        return name.starts_with(kNumbered) && name.substr(kNumbered.size()) != medium;
    });
}

std::size_t UDisksObjects::mountCount(const QString& block) const {
    return fileNames(block, kFilesystem, "MountPoints").size();
}

bool UDisksObjects::isInUseBeside(const QString& block, const QString& drive) const {
    return std::any_of(blocks_.cbegin(), blocks_.cend(), [&](const QString& other) {
        return other != block && driveOf(other) == drive && mountCount(other) > 0;
    });
}

bool UDisksObjects::isHousingInUseBeside(const QString& block, const QString& drive) const {
    const auto housing = property(drive, kDrive, "SiblingId").toString();
    if (housing.isEmpty())
        return false;
    return std::any_of(blocks_.cbegin(), blocks_.cend(), [&](const QString& other) {
        return other != block && mountCount(other) > 0 &&
               property(driveOf(other), kDrive, "SiblingId").toString() == housing;
    });
}

} // namespace slatewise
