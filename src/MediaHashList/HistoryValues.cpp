#include "MediaHashList/History.h"
#include "MediaHashList/IgnorePatterns.h"

#include <algorithm>

/// What a history's generations together say of each file, and of one that is to follow them.
namespace slatewise::MediaHashList {

namespace {

bool hasFormat(const std::vector<FileValue>& values, HashFormat format) {
    return std::any_of(values.begin(), values.end(),
                       [&](const auto& value) { return value.format == format; });
}

/// A format that is new to a file stands beside one that is not, which says whether it is the same.
HashAction actionOf(const FileValue& value, const std::vector<FileValue>& earlier) {
    if (earlier.empty())
        return HashAction::Original;
    const bool isSame = std::all_of(earlier.begin(), earlier.end(), [&](const auto& known) {
        return known.format != value.format || known.value == value.value;
    });
    return isSame ? HashAction::Verified : HashAction::Failed;
}

/// Of a file that is said to have failed.
void judgeFailed(HashedFile& file, const std::vector<FileValue>& earlier) {
    const auto isKnown = [&](const FileValue& value) {
        return hasFormat(earlier, value.format);
    };
    if (std::none_of(file.values.begin(), file.values.end(), isKnown))
        return;
    for (auto& value : file.values)
        value.action = isKnown(value) ? HashAction::Failed : HashAction::Verified;
}

/// Values go where their file went. All are taken before any is put down: two files may have
/// changed names with each other.
void followRenames(const Generation& generation, KnownValues& known) {
    KnownValues moved;
    for (const auto& file : generation.files) {
        const auto earlier = known.find(file.previousPath);
        if (earlier == known.end() || file.previousPath == file.path)
            continue;
        moved.insert_or_assign(file.path, std::move(earlier->second));
        known.erase(earlier);
    }
    for (auto& [path, values] : moved)
        known.insert_or_assign(path, std::move(values));
}

} // namespace

KnownValues History::known() const {
    KnownValues known;
    for (const auto& generation : generations_) {
        followRenames(generation, known);
        for (const auto& file : generation.files) {
            auto& values = known[file.path];
            // What stands beside a value that failed was computed of other bytes.
            if (hasFailed(file))
                continue;
            for (const auto& value : file.values) {
                // Two that differ are as good as a thousand: nothing is the same as both.
                const auto differing =
                    std::count_if(values.begin(), values.end(),
                                  [&](const auto& each) { return each.format == value.format; });
                const bool isKnown =
                    std::any_of(values.begin(), values.end(), [&](const auto& each) {
                        return each.format == value.format && each.value == value.value;
                    });
                if (!isKnown && differing < 2)
                    values.push_back(value);
            }
        }
    }
    return known;
}

std::vector<std::string> History::givenUp(const KnownValues& known) const {
    std::vector<std::string> paths;
    if (generations_.size() < 2)
        return paths;
    const auto& newest = generations_.back();
    std::vector<std::string_view> named;
    for (const auto& file : newest.files)
        named.push_back(file.path);
    std::sort(named.begin(), named.end());
    IgnoreList ignored(newest.ignored);
    for (const auto& [path, values] : known) {
        if (!std::binary_search(named.begin(), named.end(), path) && ignored.ignores(path))
            paths.push_back(path);
    }
    return paths;
}

void History::judge(Generation& next) const {
    const auto earlier = known();
    const auto knownAs = [](const HashedFile& file) -> const std::string& {
        return file.previousPath.empty() ? file.path : file.previousPath;
    };
    for (auto& file : next.files) {
        if (!earlier.contains(file.previousPath))
            file.previousPath.clear();
    }
    std::erase_if(next.files, [&](const HashedFile& file) {
        return hasFailed(file) && !earlier.contains(knownAs(file));
    });
    for (auto& file : next.files) {
        const auto found = earlier.find(knownAs(file));
        const auto values = found == earlier.end() ? std::vector<FileValue>() : found->second;
        if (hasFailed(file)) {
            judgeFailed(file, values);
            continue;
        }
        for (auto& value : file.values)
            value.action = actionOf(value, values);
    }
}

} // namespace slatewise::MediaHashList
