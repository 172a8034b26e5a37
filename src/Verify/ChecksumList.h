#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// Lists of SHA-256 sums as `sha256sum` and its kin write them. Functions of values.
namespace slatewise::Verify::ChecksumList {

struct Line {
    /// Lower-case hexadecimal digits.
    std::string digest;
    std::string path;
};

/// The lines that say something. As other systems end them, too: a name that ends so is escaped.
std::vector<std::string_view> linesOf(std::string_view text);

/// Fails with `ListError`, of `list`, when it is no such line.
Line parsed(std::string_view line, const std::filesystem::path& list);

} // namespace slatewise::Verify::ChecksumList
