#pragma once

#include "MediaHashList/Generation.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace slatewise::MediaHashList {

/// Works out the values of a tree's folders from those of its files, in one format. A folder gets a
/// value when all that lies in it has one.
class FolderHashes {
public:
    explicit FolderHashes(HashFormat format) : format_(format) {}

    /// Paths are below the root; folders on the way come into being.
    void addFile(std::string_view path, const std::string& value);
    /// A folder that may be empty.
    void addFolder(std::string_view path);
    /// A folder whose value is known, with all that lies in it.
    void addFolder(std::string_view path, const FolderValue& value);
    /// Something whose value is not known.
    void addUnknown(std::string_view path) { parentOf(path).isComplete = false; }

    /// The values of the root, under the empty path, and of every folder below it, as far as they
    /// have any.
    std::map<std::string, FolderValue> finish();

private:
    struct Parts {
        std::vector<std::string> contents;
        std::vector<std::string> structures;
        bool isComplete = true;
    };
    Parts& parentOf(std::string_view path);
    std::string namedHash(std::string_view path, const std::string& value) const;

    HashFormat format_;
    std::map<std::string, Parts, std::less<>> folders_{{"", {}}};
};

} // namespace slatewise::MediaHashList
