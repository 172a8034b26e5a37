#pragma once

#include "Platform/Desktop/UserDefaults.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// Real files and folders for tests.
namespace slatewise::test {

/// Where tests work: on the build's disk, and in memory, where files cost nothing but what is done
/// with them. Each entry's name begins with the id of the process that made it.
std::filesystem::path scratchFolder();
std::filesystem::path scratchFolderInMemory();

/// A new empty folder, removed with all it holds at the end of its life.
class TemporaryFolder {
public:
    explicit TemporaryFolder(const std::filesystem::path& parent = scratchFolder());
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::filesystem::path& name) const {
        return path_ / name;
    }

private:
    std::filesystem::path path_;
};

/// Where the build puts its programs.
std::filesystem::path programsFolder();

/// Writes a file with all folders on the way.
void writeFile(const std::filesystem::path& path, std::string_view content);

std::string readFile(const std::filesystem::path& path);

/// Lets a file's status change now, and leaves its content and its own date alone. The kernel's
/// clock for dates is a coarse one: returns when the change shows.
void touchRights(const std::filesystem::path& path);

/// `size` bytes that do not repeat within a MiB and depend on `seed` alone.
std::string bytesOf(std::size_t size, std::uint32_t seed = 1);

/// The digest of some bytes as another implementation, the sha256sum tool, has it.
std::string independentSha256(const std::filesystem::path& file);

/// Settings in a file of their own that ends with the test.
struct TemporaryDefaults {
    TemporaryFolder folder;
    UserDefaults defaults{folder / "settings.ini"};
};

} // namespace slatewise::test
