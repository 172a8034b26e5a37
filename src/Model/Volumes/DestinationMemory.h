#pragma once

#include "Model/Volumes/VolumeBoard.h"

namespace slatewise {

class UserDefaults;

/// Which destinations were ticked last, and which disks a person wanted as destinations against
/// what they look like, from one start of the program to the next. By lasting ids.
namespace DestinationMemory {

StoredDestinations load(const UserDefaults& defaults);
void save(const VolumeIDs& selected, UserDefaults& defaults);

VolumeIDs loadWanted(const UserDefaults& defaults);
void saveWanted(const VolumeIDs& wanted, UserDefaults& defaults);

} // namespace DestinationMemory

} // namespace slatewise
