#include "Platform/TrustedPrograms.h"

#include <sys/stat.h>
#include <unistd.h>

#include <system_error>

namespace slatewise::TrustedPrograms {

std::optional<std::filesystem::path> own() {
    std::error_code failure;
    auto executable = std::filesystem::read_symlink("/proc/self/exe", failure);
    if (failure)
        return std::nullopt;
    return executable;
}

bool isTrusted(const std::filesystem::path& file) {
    bool isOnesBelowThere = false;
    for (auto at = file;; at = at.parent_path()) {
        struct stat facts {};
        const bool exists = ::lstat(at.c_str(), &facts) == 0;
        const bool isLink = exists && S_ISLNK(facts.st_mode);
        const bool isOurs = facts.st_uid == 0 || facts.st_uid == ::geteuid();
        // In a folder like /tmp everybody may make things, and nobody may touch those of others.
        const bool isSafe = isOnesBelowThere && (facts.st_mode & S_ISVTX) != 0;
        const bool isOpen = !isLink && !isSafe && (facts.st_mode & (S_IWGRP | S_IWOTH)) != 0;
        if (exists && (!isOurs || isOpen))
            return false;
        if (at == at.parent_path())
            return true;
        isOnesBelowThere = exists;
    }
}

std::optional<std::filesystem::path> helper(std::string_view name) {
    const auto executable = own();
    if (!executable)
        return std::nullopt;
    const auto folder = executable->parent_path();
    for (const auto& place : {folder, folder.parent_path() / "libexec/slatewise-dit"}) {
        // What is looked at is what is run: a link may lead elsewhere by then.
        std::error_code failure;
        auto file = std::filesystem::canonical(place / name, failure);
        if (!failure && ::access(file.c_str(), X_OK) == 0 && isTrusted(file))
            return file;
    }
    return std::nullopt;
}

} // namespace slatewise::TrustedPrograms
