#pragma once

#include <optional>
#include <string>

namespace slatewise {

struct BatchPlan;

/// What stands against a batch before it has begun.
namespace BatchObstacle {

/// Why nothing of the plan can be begun, in the user's words; empty when nothing is in the way.
/// Asks the disks and blocks as long as they do; any thread. Throws `Error` when the machine's
/// mounts cannot be read.
std::optional<std::string> find(const BatchPlan& plan);

} // namespace BatchObstacle

} // namespace slatewise
