#pragma once

#include "Batch/BatchPlan.h"
#include "Platform/Clock.h"

#include <filesystem>
#include <optional>
#include <string>

/// Guards against a copy that would go into its own source. Looks at where folders really lie:
/// through links, and through folders that are mounted in a second place.
namespace slatewise::FolderOverlap {

/// Whether `inner` is `outer` or lies below it. Neither need exist.
bool contains(const std::filesystem::path& outer, const std::filesystem::path& inner);

/// What to tell the user when a destination lies in a card, or a card in the folder that its copy
/// would go to at this moment. Writes nothing.
std::optional<std::string> find(const BatchPlan& plan, Instant now);

} // namespace slatewise::FolderOverlap
