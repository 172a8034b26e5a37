#pragma once

#include "Batch/BatchSurroundings.h"
#include "Volumes/VolumeRecords.h"

#include <string>
#include <string_view>

namespace slatewise {
class L10n;
}

/// The end of a card's road in a batch.
namespace slatewise::CardEject {

/// Ejects the card and gives what became of it, in the user's words: that it may be pulled, or why
/// not. The log has it too, with what the system said. Never fails; blocks as the eject does.
std::string run(const decltype(BatchSurroundings::eject)& eject, const ClassifiedVolume& card,
                L10n l10n);

/// The same of a card that nobody tries to eject.
std::string refuse(const ClassifiedVolume& card, std::string_view (L10n::*reason)() const,
                   L10n l10n);

/// The same of a card whose eject nobody waits for any longer.
std::string leaveInDoubt(const ClassifiedVolume& card, L10n l10n);

} // namespace slatewise::CardEject
