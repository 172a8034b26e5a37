#pragma once

#include "Platform/Disks/DiskFacts.h"

#include <QDBusObjectPath>
#include <QMap>
#include <QString>
#include <QVariantMap>

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace slatewise {

/// What is to be done to eject a volume. Paths are those of the service's objects.
struct EjectPlan {
    enum class Drive {
        /// Nothing can be done to it, and nothing need be.
        LeaveAlone,
        /// Another volume on it, or on a drive in the same housing, is mounted.
        InUse,
        Eject,
        PowerOff,
    };

    QString fileSystem;
    /// The encrypted device to lock after unmounting; empty when there is none.
    QString encrypted;
    Drive driveStep = Drive::LeaveAlone;
    QString drive;
};

/// All that UDisks2 has said about the disks of a machine at one moment. At rest: any thread may
/// read it.
class UDisksObjects {
public:
    using Interfaces = QMap<QString, QVariantMap>;
    using Objects = QMap<QDBusObjectPath, Interfaces>;

    UDisksObjects() = default;
    explicit UDisksObjects(Objects objects);

    /// The bus stays unknown for connections that the service does not tell apart. Nothing when it
    /// does not know the device, or still the medium that was in it before.
    std::optional<DiskFacts> facts(const MountedDevice& mounted) const;

    /// Whether these are about the file system that is mounted there: the service has looked at
    /// that, and has seen the mount. It may be behind events.
    bool isUpToDate(const MountedDevice& mounted) const;

    /// A medium is ejected from a reader that understands the command: cards in a slot of their
    /// own and NVMe do not, whatever the service says, and their slots may mount them again for it.
    /// Any other drive is powered off where that can be done. It is left alone while another volume
    /// on it is mounted, or one on a drive in the same housing, which has one plug for both.
    /// Nothing when the service does not know the device, or cannot be told which of several places
    /// to unmount it from.
    std::optional<EjectPlan> ejectPlan(dev_t numbers) const;

private:
    const QVariantMap* interface(const QString& object, const char* name) const;
    QVariant property(const QString& object, const char* interface, const char* name) const;
    QString referred(const QString& object, const char* interface, const char* name) const;

    QString blockBelow(const QString& block) const;
    QString driveOf(const QString& block) const;
    bool isImage(const QString& block) const;
    bool understandsEject(const QString& block, const QString& drive) const;
    std::vector<std::string> fileNames(const QString& block, const char* interface,
                                       const char* name) const;
    bool isOfAnotherMedium(const QString& block, const std::string& medium) const;
    std::size_t mountCount(const QString& block) const;
    bool isInUseBeside(const QString& block, const QString& drive) const;
    bool isHousingInUseBeside(const QString& block, const QString& drive) const;

    Objects objects_;
    QMap<quint64, QString> blocks_;
};

} // namespace slatewise
