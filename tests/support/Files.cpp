#include "support/Files.h"

#include "Platform/Files/FileSystem.h"
#include "support/Process.h"
#include "support/Waiting.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <random>
#include <stdexcept>
#include <utility>

namespace slatewise::test {

std::filesystem::path scratchFolder() {
    return SLATEWISE_TEST_SCRATCH;
}

std::filesystem::path scratchFolderInMemory() {
    return "/dev/shm/slatewise-tests-" + std::to_string(::geteuid());
}

TemporaryFolder::TemporaryFolder(const std::filesystem::path& parent) {
    std::filesystem::create_directories(parent);
    const auto pattern = parent / (std::to_string(::getpid()) + "-XXXXXX");
    auto name = pattern.native();
    if (!::mkdtemp(name.data()))
        throw std::runtime_error("no temporary folder: " + name);
    path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path programsFolder() {
    return SLATEWISE_PROGRAMS;
}

void writeFile(const std::filesystem::path& path, std::string_view content) {
    FileSystem::createFolders(path.parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file)
        throw std::runtime_error("not written: " + path.native());
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("not readable: " + path.native());
    constexpr std::size_t kPiece = 65'536;
    std::string content;
    std::string piece(kPiece, '\0');
    while (file.read(piece.data(), kPiece) || file.gcount() > 0)
        content.append(piece, 0, static_cast<std::size_t>(file.gcount()));
    if (file.bad())
        throw std::runtime_error("not read: " + path.native());
    return content;
}

void touchRights(const std::filesystem::path& path) {
    const auto lastChange = [&] {
        struct stat file {};
        if (::stat(path.c_str(), &file) != 0)
            throw std::runtime_error("not there: " + path.native());
        return std::pair(file.st_ctim.tv_sec, file.st_ctim.tv_nsec);
    };
    const auto before = lastChange();
    (void)waitUntil([&] {
        std::filesystem::permissions(path, std::filesystem::perms::owner_read |
                                               std::filesystem::perms::owner_write);
        return lastChange() != before;
    });
}

std::string bytesOf(std::size_t size, std::uint32_t seed) {
    std::mt19937 numbers(seed);
    std::string bytes(size, '\0');
    for (std::size_t at = 0; at < size; at += sizeof(std::uint32_t)) {
        const auto number = static_cast<std::uint32_t>(numbers());
        bytes.replace(at, std::min(sizeof number, size - at),
                      reinterpret_cast<const char*>(&number), std::min(sizeof number, size - at));
    }
    return bytes;
}

std::string independentSha256(const std::filesystem::path& file) {
    constexpr std::size_t kDigestLength = 64;
    const auto result = run({"sha256sum", "--zero", file.native()});
    if (result.exitCode != 0)
        throw std::runtime_error(result.standardError);
    return result.standardOutput.substr(0, kDigestLength);
}

} // namespace slatewise::test
