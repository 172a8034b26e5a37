#include "support/Leftovers.h"

#include "Platform/Disks/MountTable.h"
#include "Platform/Text.h"
#include "support/Files.h"
#include "support/Process.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace slatewise::test {

namespace {

bool isOfDeadTest(const std::filesystem::path& folder) {
    const auto name = folder.filename().native();
    const auto end = name.find('-');
    const auto process = static_cast<pid_t>(std::atoi(name.substr(0, end).c_str()));
    return end != std::string::npos && process > 0 && ::kill(process, 0) != 0 && errno == ESRCH;
}

bool liesIn(const std::filesystem::path& path, const std::filesystem::path& folder) {
    return path.native().starts_with(folder.native() + "/");
}

/// Without a word when it fails: whoever comes next tries again.
void tryPrivileged(const std::vector<std::string>& words) {
    try {
        runPrivileged(words);
    } catch (const std::exception&) {
    }
}

/// Whether nothing is mounted below the folder any more.
bool unmountBelow(const std::filesystem::path& folder) {
    const auto below = [&folder] {
        std::vector<Mount> mounts = MountTable::read();
        std::erase_if(mounts,
                      [&](const Mount& mount) { return !liesIn(mount.mountPoint, folder); });
        return mounts;
    };
    const auto mounts = below();
    for (auto mount = mounts.rbegin(); mount != mounts.rend(); ++mount)
        tryPrivileged({"umount", "--lazy", mount->mountPoint.native()});
    return below().empty();
}

void detachImagesIn(const std::filesystem::path& folder) {
    const auto devices =
        run({"losetup", "--list", "--noheadings", "--raw", "--output", "NAME,BACK-FILE"});
    for (const auto line : Text::pieces(devices.standardOutput, '\n')) {
        const auto end = line.find(' ');
        if (end != std::string_view::npos && liesIn(line.substr(end + 1), folder))
            tryPrivileged({"losetup", "--detach", std::string(line.substr(0, end))});
    }
}

} // namespace

void removeLeftovers() {
    for (const auto& root : {scratchFolder(), scratchFolderInMemory()}) {
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(root, none)) {
            if (!isOfDeadTest(entry.path()) || !unmountBelow(entry.path()))
                continue;
            detachImagesIn(entry.path());
            // More levels than the standard library can remove.
            run({"rm", "-rf", "--one-file-system", entry.path().native()});
        }
    }
}

} // namespace slatewise::test
