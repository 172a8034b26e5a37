#pragma once

#include "Volumes/VolumeRecords.h"

#include <filesystem>

namespace slatewise {

/// A folder that somebody chose to be a card or a destination, whatever lies in it and whatever the
/// disk below it would be taken for. `diskFacts` tell of that disk, as far as anything is known.
ClassifiedVolume pickedFolder(VolumeFacts diskFacts, const std::filesystem::path& folder,
                              VolumeKind kind);

} // namespace slatewise
