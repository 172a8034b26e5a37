#pragma once

#include "MediaHashList/Generation.h"
#include "Platform/Error.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Files/RootFolder.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace slatewise::MediaHashList {

/// The folder in which a history lies.
inline constexpr std::string_view kHistoryFolder = "ascmhl";
/// The file in it that names all generations.
inline constexpr std::string_view kChainName = "ascmhl_chain.xml";

/// Whether a list of ours had this name until it was whole, which a killed writer may leave.
bool isPassingName(std::string_view name);

/// The text of a list, of whatever kind. A link, a FIFO or what is no list for its size alone is
/// refused with `PosixError`, or, for its size, with `ListError`.
std::string readList(const RootFolder& root, const std::filesystem::path& file);

/// Whether the folder `below` beneath `root` has a chain or a list. Fails with `PosixError`.
bool hasLists(const RootFolder& root, const std::filesystem::path& below);

/// A generation of ours that no link names: whoever wrote it ended before the chain was written.
struct UnfinishedList {
    /// The one that the chain would have.
    ChainLink link;
    Generation generation;

    /// Whether it may be, once its values are proved again. What an offload that did not end had
    /// left undone nobody knows.
    bool canBeEntered() const { return generation.process == Process::InPlace; }
};

/// What generations say of each file: every value once, the oldest first. Two values of one format
/// contradict each other.
using KnownValues = std::map<std::string, std::vector<FileValue>, std::less<>>;

/// All generations of one tree. What is read or written fails with `PosixError`. Blocks.
class History {
public:
    /// One that has no generation yet, of the folder `below` beneath `root`, which is referred to.
    explicit History(const RootFolder& root, std::filesystem::path below = {})
        : root_(&root), below_(std::move(below)) {}

    /// As it lies there. Every generation must be there and be the one that the chain names, and no
    /// other list may lie beside them: the next generation could bear the number of one that the
    /// chain lost. Fails with `ListError`, too, and with `CancellationError` when asked to stop
    /// between two lists.
    static History load(const RootFolder& root, std::filesystem::path below = {},
                        const std::stop_token& stop = {});

    /// As `load`, or one without a generation where no list lies there, to be appended to. Nobody
    /// else gets it to append to for as long as this lives; one that another program has fails with
    /// `EBUSY`.
    static History toGoOn(const RootFolder& root, std::filesystem::path below);

    /// Enters the list that its writer did not come to name into the chain. `c4` is of its bytes.
    /// Fails with `ListError` when that list is not there any more, or the rest is not whole.
    static void enterUnfinished(const RootFolder& root, std::filesystem::path below,
                                const std::string& c4);

    /// Why a list is not to be relied on. Called while the failure is being handled.
    using Complaint = std::function<void(const std::filesystem::path& list, const Error& failure)>;

    /// As `load`, with what can be had: a damaged list is told and passed over. Where it is the
    /// chain, every list that lies there is taken.
    static History loadReadable(const RootFolder& root, std::filesystem::path below,
                                const Complaint& complain, const std::stop_token& stop = {});

    const std::vector<Generation>& generations() const { return generations_; }

    /// The file of each of them, in the history's folder.
    const std::vector<std::string>& fileNames() const { return fileNames_; }

    /// That list, where it is the chain's next and all else is whole.
    const std::optional<UnfinishedList>& unfinished() const { return unfinished_; }

    KnownValues known() const;

    /// What `known` has and the newest generation neither names nor would: a pattern leaves it out.
    std::vector<std::string> givenUp(const KnownValues& known) const;

    /// The lists of histories further down that a generation refers to, but which are not there,
    /// are not in their chain or have other bytes than it says; each once, below `root`. None that
    /// is gone where a pattern of the newest generation leaves it out. Stops as `load` does.
    std::vector<std::string> brokenReferences(const std::stop_token& stop = {}) const;

    /// Says of each value of a generation that is to follow what it is to this history. A file
    /// whose earlier values are of other formats must have one of these too. What is said to have
    /// failed already stays so, if the history knows the file, and else is taken out; of a failed
    /// file, a value in a format that the history does not have of it is none of its failures. An
    /// earlier path that the history does not know is taken out.
    void judge(Generation& next) const;

    /// Writes the next generation and sees it onto the disk, and then the chain, by renaming.
    /// `next` is sorted, and must only have names that XML can hold. Gives the generation's file,
    /// as seen from the history's own folder. A file that has its name already stays, EEXIST.
    Reference append(Generation next);

private:
    void readGenerations(const Complaint& complain, const std::stop_token& stop);
    void complainOfStrays(bool isElseWhole, const Complaint& complain);
    void writeChainWith(const ChainLink& link);
    int nextNumber() const;
    std::string nextFileName(Instant createdAt) const;

    const RootFolder* root_;
    std::filesystem::path below_;
    std::vector<ChainLink> chain_;
    std::vector<Generation> generations_;
    std::vector<std::string> fileNames_;
    std::optional<UnfinishedList> unfinished_;
    /// Of whoever may append.
    std::shared_ptr<const FileDescriptor> lock_;
};

} // namespace slatewise::MediaHashList
