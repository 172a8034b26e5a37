#pragma once

#include <memory>

namespace slatewise {

class AppDatabase;

/// The store in the user's folder; where that cannot be opened, which is logged, one in memory that
/// moves there as soon as it can. Blocks; any thread.
std::shared_ptr<AppDatabase> openUserStore();

} // namespace slatewise
