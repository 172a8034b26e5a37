#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

/// Which programs may be run with the user's rights.
namespace slatewise::TrustedPrograms {

/// The file that this process runs from; empty when the system does not say.
std::optional<std::filesystem::path> own();

/// Whether nobody but the superuser and the user could have put a file there, or could yet. An
/// absolute path without links.
bool isTrusted(const std::filesystem::path& file);

/// One of our own programs that no user starts: beside this one, or where such programs are
/// installed. Empty when there is none that can be trusted.
std::optional<std::filesystem::path> helper(std::string_view name);

} // namespace slatewise::TrustedPrograms
