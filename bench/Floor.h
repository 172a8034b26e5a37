#pragma once

#include <filesystem>

namespace slatewise::bench {

/// The least a proved copy can cost in one stream: the same system calls as the program's, and
/// nothing around them. For each file direct read, hash, direct write, sync, the source's date;
/// then one sync of the volume; then for each copy direct read and hash.
void copyAtTheFloor(const std::filesystem::path& from, const std::filesystem::path& to);

/// The least it can cost when a reader, a hash and a writer work at the same time, each on a thread
/// of its own with a few chunks between them. Otherwise as the floor.
void copyInAPipeline(const std::filesystem::path& from, const std::filesystem::path& to);

} // namespace slatewise::bench
