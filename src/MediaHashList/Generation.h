#pragma once

#include "Platform/Clock.h"
#include "Platform/HashValue.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The industry's exchange format for checksums: a folder `ascmhl` at the root of a delivered tree,
/// with one generation for each time the tree was hashed and a chain that lists them.
namespace slatewise::MediaHashList {

/// The formats that a generation may hold, in the order in which they stand there.
inline constexpr std::array kHashFormats = {HashFormat::C4,   HashFormat::MD5,
                                            HashFormat::SHA1, HashFormat::XXH128,
                                            HashFormat::XXH3, HashFormat::XXH64};

/// What a generation says of a value.
enum class HashAction {
    /// The history sees the file for the first time, or never had a value that proved it.
    Original,
    /// The same as in an earlier generation, or of a format that is new to a file of which the
    /// known format is held against the earlier one beside it.
    Verified,
    /// An earlier generation has another value.
    Failed,
};

constexpr std::array<std::string_view, 3> rawWords(HashAction) {
    return {"original", "verified", "failed"};
}

/// How a tree came to be hashed.
enum class Process { InPlace, Transfer, Flatten };

constexpr std::array<std::string_view, 3> rawWords(Process) {
    return {"in-place", "transfer", "flatten"};
}

/// One value of a file.
struct FileValue {
    HashFormat format = HashFormat::XXH128;
    std::string value;
    std::optional<HashAction> action;
    std::optional<Instant> hashedAt;

    friend bool operator==(const FileValue&, const FileValue&) = default;
};

struct HashedFile {
    /// Below the tree's root, "/" between its parts.
    std::string path;
    std::optional<std::int64_t> sizeBytes;
    std::optional<Instant> modified;
    /// One for each format.
    std::vector<FileValue> values;
    /// Under which earlier generations have it, when it was renamed; else empty.
    std::string previousPath{};

    friend bool operator==(const HashedFile&, const HashedFile&) = default;
};

/// Whether an earlier generation has another value of it.
bool hasFailed(const HashedFile& file);

/// The two values of a folder: of what lies in it, and of that with all names.
struct FolderValue {
    HashFormat format = HashFormat::XXH128;
    std::string content;
    std::string structure;

    friend bool operator==(const FolderValue&, const FolderValue&) = default;
};

struct HashedFolder {
    std::string path;
    std::optional<Instant> modified;
    std::vector<FolderValue> values;

    friend bool operator==(const HashedFolder&, const HashedFolder&) = default;
};

struct Author {
    std::string name;
    std::string role;

    friend bool operator==(const Author&, const Author&) = default;
};

/// Who hashed, when and with what.
struct Creator {
    Instant createdAt{};
    std::string hostName;
    std::string tool;
    std::string toolVersion;
    std::vector<Author> authors;
    std::string location;
    std::string comment;

    friend bool operator==(const Creator&, const Creator&) = default;
};

/// A generation of a history further down the tree.
struct Reference {
    std::string path;
    std::string c4;

    friend bool operator==(const Reference&, const Reference&) = default;
};

/// One time that a tree was hashed. Dates are kept to the second.
struct Generation {
    Creator creator;
    Process process = Process::InPlace;
    std::vector<FolderValue> root;
    /// Patterns of what was left out, as in .gitignore.
    std::vector<std::string> ignored;
    /// Both in post order: a folder's own values stand after everything in it.
    std::vector<HashedFile> files;
    std::vector<HashedFolder> folders;
    std::vector<Reference> references;

    friend bool operator==(const Generation&, const Generation&) = default;
};

/// One line of the chain.
struct ChainLink {
    int number = 0;
    /// The generation's file in the folder `ascmhl`.
    std::string fileName;
    /// Of that file's bytes.
    std::string c4;

    friend bool operator==(const ChainLink&, const ChainLink&) = default;
};

/// Whether XML can hold a name, so that it reads back as the same bytes.
bool canHold(std::string_view name);

/// The text with "_" for each character that XML cannot hold or that would end a line.
std::string holdable(std::string_view text);

/// Whether a path out of a list stays below the root that it is taken from.
bool leadsDown(std::string_view path);

/// Brings files and folders into the order in which they are written.
void sortInPostOrder(Generation& generation);

/// The text of a generation. Every name must be one that XML can hold.
std::string writeGeneration(const Generation& generation);

/// Reads what anybody wrote, dates to the second. Formats that are not known are passed over. Fails
/// with `ListError` when it is no generation, declares entities, names a path that does not lead
/// down, or has so many attributes or patterns that it would hold up whoever reads it.
Generation readGeneration(std::string_view text);

std::string writeChain(const std::vector<ChainLink>& chain);

/// As `readGeneration`. A generation's file lies in the folder `ascmhl` itself. Gives the links in
/// the order of their numbers, which count from 1 and leave none out.
std::vector<ChainLink> readChain(std::string_view text);

} // namespace slatewise::MediaHashList
