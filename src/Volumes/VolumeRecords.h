#pragma once

#include "Platform/Files/FolderIdentity.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace slatewise {

/// What keeps this user from writing to a volume.
enum class WriteObstacle {
    None,
    /// The mount or the device itself.
    ReadOnly,
    /// The rights of the folder at the volume's root.
    NoPermission,
    /// Nobody knows: the volume does not answer.
    NoAnswer,
};

/// How an id begins that goes by the file system: one that lasts when the device changes.
inline constexpr std::string_view uuidPrefix = "UUID=";

/// Everything known about one mounted volume or picked folder.
struct VolumeFacts {
    /// The mount point, or the folder for a picked folder.
    std::filesystem::path mountPoint;
    /// Of the folder there, by which it is known again when something is done with it; empty when
    /// nobody could say.
    std::optional<FolderIdentity> identity{};
    std::string volumeName;
    /// Name of the device as the system gives it; empty when unknown.
    std::string deviceIdentifier;
    /// Of the file system; never part of the `id`.
    std::optional<std::string> volumeUUID;
    /// The folder or subvolume that is mounted in place of the whole file system: "/@footage".
    /// Empty for the whole.
    std::string mountedPart;
    std::string fileSystem;
    std::string protocolName;
    /// Bytes; 0 when unknown.
    std::int64_t totalBytes = 0;
    std::int64_t freeBytes = 0;
    bool isInternal = false;
    bool isRemovable = false;
    bool isExternal = false;
    WriteObstacle writeObstacle = WriteObstacle::None;
    /// Tags of the camera folders found at the root, in the order of the signature table.
    std::vector<std::string> signatures;

    /// By which every set and map knows the volume: the device, or the mount point without one.
    std::string id() const {
        return deviceIdentifier.empty() ? mountPoint.native() : deviceIdentifier;
    }

    /// By which the volume is known again when it comes back, on whatever device that may be: the
    /// file system, or the `id` where that has no UUID.
    std::string lastingID() const {
        return volumeUUID ? std::string(uuidPrefix) + *volumeUUID + mountedPart : id();
    }

    bool isWritable() const { return writeObstacle == WriteObstacle::None; }

    friend bool operator==(const VolumeFacts&, const VolumeFacts&) = default;
};

enum class VolumeKind { CameraCard, Destination, System, Unknown };

constexpr std::string_view rawValue(VolumeKind kind) {
    switch (kind) {
    case VolumeKind::CameraCard:
        return "cameraCard";
    case VolumeKind::Destination:
        return "destination";
    case VolumeKind::System:
        return "system";
    case VolumeKind::Unknown:
        break;
    }
    return "unknown";
}

/// The reason of a folder that the user picked, by which it differs from a mounted volume.
inline constexpr std::string_view pickedReason = "folder_picked";

/// Volumes by their ids.
using VolumeIDs = std::set<std::string, std::less<>>;

/// What is said of each card, by the card's id.
using CardLabels = std::map<std::string, std::string, std::less<>>;

/// Facts together with the verdict on them.
struct ClassifiedVolume {
    VolumeFacts facts;
    VolumeKind kind = VolumeKind::Unknown;
    /// Sum of the weights that fired; 0 for a picked folder.
    int score = 0;
    /// One entry per weight that fired, in firing order.
    std::vector<std::string> reasons;
    /// A picked folder that a disk is meant to be mounted on, or that lies below one, where none
    /// is: what is written there goes to the system's disk.
    bool isBare = false;

    bool isPickedFolder() const {
        return std::find(reasons.begin(), reasons.end(), pickedReason) != reasons.end();
    }

    /// A picked folder is known by its path, so that several folders of one disk, and the disk
    /// itself, live side by side.
    std::string id() const { return isPickedFolder() ? facts.mountPoint.native() : facts.id(); }
    /// The same for what is to be remembered.
    std::string lastingID() const {
        return isPickedFolder() ? facts.mountPoint.native() : facts.lastingID();
    }
    const std::string& name() const { return facts.volumeName; }

    friend bool operator==(const ClassifiedVolume&, const ClassifiedVolume&) = default;
};

} // namespace slatewise
