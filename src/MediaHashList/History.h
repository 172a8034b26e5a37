#pragma once

#include "MediaHashList/Generation.h"
#include "Platform/Error.h"
#include "Platform/Files/RootFolder.h"

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace slatewise::MediaHashList {

/// The folder in which a history lies.
inline constexpr std::string_view kHistoryFolder = "ascmhl";
/// The file in it that names all generations.
inline constexpr std::string_view kChainName = "ascmhl_chain.xml";

/// The text of a list, of whatever kind. A link, a FIFO or what is no list for its size alone is
/// refused with `PosixError`.
std::string readList(const RootFolder& root, const std::filesystem::path& file);

/// What generations say of each file, the oldest word of each format.
using KnownValues = std::map<std::string, std::vector<FileValue>, std::less<>>;

/// All generations of one tree. What is read or written fails with `PosixError`. Blocks.
class History {
public:
    /// One that has no generation yet, of the folder `below` beneath `root`, which is referred to.
    explicit History(const RootFolder& root, std::filesystem::path below = {})
        : root_(&root), below_(std::move(below)) {}

    /// As it lies there. Every generation must be there and be the one that the chain names, and no
    /// other list may lie beside them: the next generation could bear the number of one that the
    /// chain lost. Fails with `ListError`, too.
    static History load(const RootFolder& root, std::filesystem::path below = {});

    /// Why a list is not to be relied on. Called while the failure is being handled.
    using Complaint = std::function<void(const std::filesystem::path& list, const Error& failure)>;

    /// As `load`, with what can be had: a damaged list is told and passed over. Where it is the
    /// chain, every list that lies there is taken.
    static History loadReadable(const RootFolder& root, std::filesystem::path below,
                                const Complaint& complain);

    const std::vector<Generation>& generations() const { return generations_; }

    KnownValues known() const;

    /// The lists of histories further down that a generation refers to, but which are not there,
    /// are not in their chain or have other bytes than it says; each once, below `root`.
    std::vector<std::string> brokenReferences() const;

    /// Says of each value of a generation that is to follow what it is to this history. A file
    /// whose earlier values are of other formats must have one of these too. What is said to have
    /// failed already stays so, if the history knows the file, and else is taken out.
    void judge(Generation& next) const;

    /// Writes the next generation and sees it onto the disk, and then the chain, by renaming.
    /// `next` is sorted, and must only have names that XML can hold. Gives the generation's file,
    /// as seen from the history's own folder.
    Reference append(Generation next);

private:
    int nextNumber() const;
    std::string nextFileName(Instant createdAt) const;

    const RootFolder* root_;
    std::filesystem::path below_;
    std::vector<ChainLink> chain_;
    std::vector<Generation> generations_;
};

} // namespace slatewise::MediaHashList
