#include "MediaHashList/FolderHashes.h"

namespace slatewise::MediaHashList {

namespace {

std::string_view parentPath(std::string_view path) {
    const auto slash = path.rfind('/');
    return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
}

std::string_view lastPart(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

} // namespace

void FolderHashes::addFolder(std::string_view path) {
    // What has an entry has all its parents, so that a deep tree is climbed once.
    while (!path.empty() && folders_.try_emplace(std::string(path)).second)
        path = parentPath(path);
}

FolderHashes::Parts& FolderHashes::parentOf(std::string_view path) {
    const auto parent = parentPath(path);
    addFolder(parent);
    return folders_.find(parent)->second;
}

std::string FolderHashes::namedHash(std::string_view path, const std::string& value) const {
    return hashOf(format_, std::string(lastPart(path)) + bytesOf(format_, value));
}

void FolderHashes::addFile(std::string_view path, const std::string& value) {
    auto& parent = parentOf(path);
    parent.contents.push_back(value);
    parent.structures.push_back(namedHash(path, value));
}

void FolderHashes::addFolder(std::string_view path, const FolderValue& value) {
    auto& parent = parentOf(path);
    parent.contents.push_back(value.content);
    parent.structures.push_back(namedHash(path, value.structure));
}

std::map<std::string, FolderValue> FolderHashes::finish() {
    std::map<std::string, FolderValue> values;
    // Backwards, whatever lies in a folder comes before the folder.
    for (auto folder = folders_.rbegin(); folder != folders_.rend(); ++folder) {
        const auto& [path, parts] = *folder;
        if (!parts.isComplete) {
            if (!path.empty())
                addUnknown(path);
            continue;
        }
        const FolderValue value = {.format = format_,
                                   .content = hashOfList(format_, parts.contents),
                                   .structure = hashOfList(format_, parts.structures)};
        if (!path.empty())
            addFolder(path, value);
        values.emplace(path, value);
    }
    return values;
}

} // namespace slatewise::MediaHashList
