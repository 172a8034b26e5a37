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

struct Shape {
    const char* name;
    std::function<void(Machine&)> build;
    /// Identifier, file system, protocol, place and verdict.
    const char* facts;
    /// The verdict where the kernel alone cannot know as much as the service.
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
