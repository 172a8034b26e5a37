#include "Offload/MediaInfoCLI/MediaInfoCLI.h"

#include "Platform/TrustedPrograms.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <system_error>

namespace slatewise::MediaInfoCLI {

namespace {

using std::filesystem::path;

constexpr const char* kToolName = "mediainfo";
/// Who may install programs there is the system's business.
constexpr std::array kSystemFolders = {"/opt/homebrew/bin", "/usr/local/bin", "/usr/bin"};

/// A copy of the tool that lies in a folder of ours or in one above it.
void appendVendorURLs(path folder, std::vector<path>& candidates) {
    constexpr int kLevels = 10;
    for (int level = 0; level < kLevels; ++level) {
        candidates.push_back(folder / "Vendor/MediaInfo" / kToolName);
        if (folder.parent_path() == folder)
            return;
        folder = folder.parent_path();
    }
}

/// A bare name was found along PATH and says nothing about a folder. Taken as a path it would mean
/// the folder we happen to be in, from where we must not run anything: it may be a card.
std::optional<std::string> firstArgument() {
    std::ifstream words("/proc/self/cmdline", std::ios::binary);
    std::string word;
    if (!std::getline(words, word, '\0') || word.find('/') == std::string::npos)
        return std::nullopt;
    return word;
}

/// A program that runs from where it was built. One that was installed or copied looks for nothing
/// in the folders above it.
bool isDevelopmentBuild(const path& executable) {
    const auto relative = executable.lexically_relative(SLATEWISE_SOURCE_FOLDER);
    return !relative.empty() && *relative.begin() != "..";
}

path resolved(const path& link) {
    std::error_code failure;
    const auto whole = std::filesystem::absolute(link, failure);
    const auto target = std::filesystem::weakly_canonical(whole, failure);
    return failure ? whole : target;
}

} // namespace

std::vector<path> candidateURLs(const path& bundle, const std::optional<path>& executable,
                                const std::optional<std::string>& argv0) {
    std::vector<path> candidates = {
        bundle / "Contents/Helpers" / kToolName,
        bundle / "Contents/MacOS" / kToolName,
        bundle / "Helpers" / kToolName,
    };
    const auto started = argv0 ? std::optional(resolved(*argv0)) : std::nullopt;
    for (const auto& base : {executable, started}) {
        if (!base)
            continue;
        const auto folder = base->parent_path();
        const auto parent = folder.parent_path();
        candidates.push_back(folder / kToolName);
        candidates.push_back(parent / "Helpers" / kToolName);
        candidates.push_back(folder / "Helpers" / kToolName);
        candidates.push_back(parent / "MacOS" / kToolName);
        if (isDevelopmentBuild(*base))
            appendVendorURLs(folder, candidates);
    }
    for (const auto* folder : kSystemFolders)
        candidates.push_back(path(folder) / kToolName);
    return candidates;
}

Tool Tool::usual() {
    const auto executable = TrustedPrograms::own();
    const auto bundle = executable ? executable->parent_path() : path("/");
    std::vector<path> candidates;
    for (const auto& file : candidateURLs(bundle, executable, firstArgument())) {
        // What was looked at is what is run, hours later: a link may lead elsewhere by then.
        const auto target = resolved(file);
        if (TrustedPrograms::isTrusted(target))
            candidates.push_back(target);
    }
    return {.candidates = std::move(candidates), .limits = {}, .noted = &MediaInfoCLI::noted()};
}

} // namespace slatewise::MediaInfoCLI
