#pragma once

#include "Model/Volumes/ContentSizes.h"

#include <string>

namespace slatewise {
class L10n;
}

/// What the volume lists say. Functions of values.
namespace slatewise::VolumeTexts {

/// Whether a volume is listed as a destination with a warning in place of its free space.
bool warns(const ClassifiedVolume& volume, VolumeSide side);

/// The small line under a volume's name: free space of a destination, or what keeps one from
/// writing there or ought to; content of a card.
std::string subtitle(const ClassifiedVolume& volume, VolumeSide side, const ContentSizes& sizes,
                     L10n l10n);

} // namespace slatewise::VolumeTexts
