#pragma once

#include <memory>

namespace slatewise {

class AppDatabase;

/// The store in the user's folder; one in memory where that cannot be opened, which is logged.
/// Blocks; any thread.
std::shared_ptr<AppDatabase> openUserStore();

} // namespace slatewise
