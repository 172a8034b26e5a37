#pragma once

#include "Batch/BatchResult.h"
#include "Batch/BatchSurroundings.h"
#include "Platform/Files/RootFolder.h"
#include "Volumes/VolumeRecords.h"

#include <memory>
#include <string_view>
#include <vector>

namespace slatewise {
class L10n;
}

/// The end of a card's road in a batch.
namespace slatewise::CardEject {

/// What a batch holds of a card and of the disks that have its copies. Null where it is gone.
struct Held {
    std::shared_ptr<const RootFolder> card;
    std::vector<std::shared_ptr<const RootFolder>> disks;
};

/// Ejects the card, unless it or one of the disks is not in its place any more, and gives what
/// became of it. Lets go of all before. The log has it too, with what the system said. Never fails;
/// blocks as the eject does.
CardEnd run(const decltype(BatchSurroundings::eject)& eject, const ClassifiedVolume& card,
            Held held, L10n l10n);

/// The same of a card that nobody tries to eject.
CardEnd refuse(const ClassifiedVolume& card, std::string_view (L10n::*reason)() const, L10n l10n);

/// The same of a card whose eject nobody waits for any longer.
CardEnd leaveInDoubt(const ClassifiedVolume& card, L10n l10n);

} // namespace slatewise::CardEject
