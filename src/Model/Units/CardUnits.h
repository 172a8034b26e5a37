#pragma once

#include "Volumes/VolumeRecords.h"

#include <string>
#include <string_view>

namespace slatewise {

/// Which camera unit and which crew each card belongs to, and which cards a unit is asked for.
/// Never stored. A value, keyed by the ids of cards.
struct CardUnits {
    CardLabels cameraByCardID;
    CardLabels ekipByCardID;
    VolumeIDs cardsNeedingUnit;

    /// Empty for a card without one.
    std::string cameraLabel(std::string_view card) const;
    std::string ekipLabel(std::string_view card) const;

    /// A blank name changes nothing.
    void setCamera(const std::string& card, std::string_view unit);
    void clearUnit(const std::string& card) { cameraByCardID.erase(card); }

    /// The cards of a unit are without one; nobody is asked for another.
    void forgetUnit(std::string_view unit);
    void forgetEkip(std::string_view ekip);

    friend bool operator==(const CardUnits&, const CardUnits&) = default;
};

} // namespace slatewise
