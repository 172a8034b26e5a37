#pragma once

#include "Offload/OffloadSettings.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What a list leaves out on purpose, in patterns as in .gitignore.
namespace slatewise::MediaHashList {

/// Of the names that a walk leaves out, and of histories. Names that XML cannot hold have none.
std::vector<std::string> ignorePatterns(const SkipNames& skipNames);

/// Whether one of the patterns is of this path below the root, or of a folder on its way. Patterns
/// that take back others ("!") are of nothing.
bool isIgnored(std::string_view path, std::span<const std::string> patterns);

/// The same of patterns that are of paths below a folder, "" for the root.
bool isIgnoredBelow(std::string_view folder, std::string_view path,
                    std::span<const std::string> patterns);

} // namespace slatewise::MediaHashList
