#pragma once

#include "Model/VolumeBoard.h"

namespace slatewise {

class UserDefaults;

/// Which destinations were ticked last, from one start of the program to the next.
namespace DestinationMemory {

StoredDestinations load(const UserDefaults& defaults);
void save(const VolumeIDs& selected, UserDefaults& defaults);

} // namespace DestinationMemory

} // namespace slatewise
