#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// What the measurements share: files to measure with, clean caches, and clocks.
namespace slatewise::bench {

/// Makes `count` files of `sizeBytes` random bytes each, `perFolder` to a folder, below `root`.
void makeFiles(const std::filesystem::path& root, int count, std::int64_t sizeBytes, int perFolder);

/// Writes everything to the disk and empties the caches of what lies below the folders.
void dropCaches(const std::vector<std::filesystem::path>& folders);

/// Runs a shell command and fails when it does.
void shell(const std::string& command);

/// For the shell.
std::string shellQuoted(const std::filesystem::path& path);

double wallSeconds(const std::function<void()>& work);

/// Of this process and of the children it has waited for.
double cpuSeconds(const std::function<void()>& work);

double median(std::vector<double> values);

/// Keeps a figure for whoever wants all of them as JSON. `unit` is its key there, such as
/// "seconds".
void record(const std::string& measured, const std::string& way, const std::string& unit,
            double value);

/// Everything recorded so far: an array of objects with "measured", "way", and figures by their
/// units.
std::string recordedJSON();

} // namespace slatewise::bench
