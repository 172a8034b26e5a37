#pragma once

#include "Machine.h"

#include "Volumes/VolumeRecords.h"

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

/// What people plug in, as kernel and service describe it.
namespace slatewise::test {

inline constexpr auto kMountPoint = "/media/me/VOLUME";

struct Place {
    bool isInternal = false;
    bool isRemovable = false;
    bool isExternal = false;

    friend bool operator==(const Place&, const Place&) = default;
};

inline void PrintTo(const Place& place, std::ostream* out) {
    *out << (place.isInternal ? "internal " : "") << (place.isRemovable ? "removable " : "")
         << (place.isExternal ? "external" : "");
}

struct Shape {
    const char* name;
    std::function<void(Machine&)> build;
    const char* identifier;
    const char* fileSystem;
    const char* protocol;
    Place place;
    VolumeKind kind;
    /// Where the kernel alone cannot know as much as the service.
    std::optional<VolumeKind> kindWithoutService = std::nullopt;
};

inline void PrintTo(const Shape& shape, std::ostream* out) {
    *out << shape.name;
}

/// Every shape, each with what becomes of it.
const std::vector<Shape>& hardwareShapes();

/// A reader on USB with a card of that file system in it.
void readerWith(Machine& machine, const std::string& fileSystem);

/// What the service says of a block device.
QVariantMap& block(Machine& machine, const std::string& name);

} // namespace slatewise::test
