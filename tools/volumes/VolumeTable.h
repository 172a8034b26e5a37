#pragma once

#include "Volumes/VolumeRecords.h"

#include <span>
#include <string>

namespace slatewise::tool {

/// One line for each volume under a line of headings, in columns, without control characters.
std::string volumeTable(std::span<const ClassifiedVolume> volumes);

} // namespace slatewise::tool
