#include "MediaHashList/IgnorePatterns.h"

#include "MediaHashList/Generation.h"
#include "MediaHashList/History.h"

#include <fnmatch.h>

#include <algorithm>

namespace slatewise::MediaHashList {

namespace {

std::string patternOf(std::string_view name) {
    std::string pattern;
    for (const char letter : name) {
        if (std::string_view("\\*?[").find(letter) != std::string_view::npos ||
            (pattern.empty() && (letter == '#' || letter == '!')))
            pattern += '\\';
        pattern += letter;
    }
    if (pattern.ends_with(' '))
        pattern.insert(pattern.size() - 1, 1, '\\');
    return pattern;
}

bool matches(const std::string& pattern, std::string_view text) {
    return ::fnmatch(pattern.c_str(), std::string(text).c_str(), FNM_PATHNAME) == 0;
}

/// A pattern with a slash in it is of whole paths, another of names anywhere.
bool isOf(std::string pattern, std::string_view path) {
    if (pattern.ends_with('/'))
        pattern.pop_back();
    const bool isOfPaths = pattern.find('/') != std::string::npos;
    if (pattern.starts_with('/'))
        pattern.erase(0, 1);
    std::size_t start = 0;
    for (auto end = path.find('/');; end = path.find('/', end + 1)) {
        const auto way = path.substr(0, end);
        if (matches(pattern, isOfPaths ? way : way.substr(start)))
            return true;
        if (end == std::string_view::npos)
            return false;
        start = end + 1;
    }
}

} // namespace

std::vector<std::string> ignorePatterns(const SkipNames& skipNames) {
    std::vector<std::string> patterns = {std::string(kHistoryFolder),
                                         std::string(kHistoryFolder) + "/", "._*"};
    for (const auto& name : skipNames) {
        if (canHold(name) && name != kHistoryFolder)
            patterns.push_back(patternOf(name));
    }
    return patterns;
}

bool isIgnored(std::string_view path, std::span<const std::string> patterns) {
    return std::any_of(patterns.begin(), patterns.end(), [&](const std::string& pattern) {
        return !pattern.starts_with('!') && isOf(pattern, path);
    });
}

} // namespace slatewise::MediaHashList
