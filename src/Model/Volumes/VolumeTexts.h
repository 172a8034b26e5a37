#pragma once

#include "Model/Volumes/ContentSizes.h"

#include <string>
#include <string_view>

namespace slatewise {
class L10n;
}

/// What the volume lists say. Functions of values.
namespace slatewise::VolumeTexts {

/// Why a picked destination is listed with a word of warning: a disk is meant to be mounted there,
/// and none was when it was picked.
inline constexpr std::string_view bareReason = "nothing_mounted";

/// The small line under a volume's name: free space of a destination, or what keeps one from
/// writing there or ought to; content of a card.
std::string subtitle(const ClassifiedVolume& volume, VolumeSide side, const ContentSizes& sizes,
                     L10n l10n);

} // namespace slatewise::VolumeTexts
