#pragma once

#include "MediaHashList/Generation.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace slatewise::MediaHashList {

/// The folder in which a history lies.
inline constexpr std::string_view kHistoryFolder = "ascmhl";

/// The text of a list. A link, a FIFO or what is no list for its size alone is refused with
/// `Error`.
std::string readList(const std::filesystem::path& file);

/// All generations of one tree. What is read or written fails with `Error`. Blocks.
class History {
public:
    /// Of the tree below `root`; without generations when it has none. Every generation must be
    /// there and be the one that the chain names.
    static History load(const std::filesystem::path& root);

    /// Whether a folder has a history at all.
    static bool isIn(const std::filesystem::path& root);

    const std::vector<Generation>& generations() const { return generations_; }

    /// What the generations say of each file, the oldest word of each format.
    std::map<std::string, std::vector<FileValue>> known() const;

    /// Says of each value of a generation that is to follow what it is to this history. A file
    /// whose earlier values are of other formats must have one of these too.
    void judge(Generation& next) const;

    /// Writes the next generation and sees it onto the disk, and then the chain, by renaming.
    /// `next` is sorted, and must only have names that XML can hold.
    void append(Generation next);

private:
    explicit History(std::filesystem::path root) : root_(std::move(root)) {}
    int nextNumber() const;

    std::filesystem::path root_;
    std::vector<ChainLink> chain_;
    std::vector<Generation> generations_;
};

} // namespace slatewise::MediaHashList
