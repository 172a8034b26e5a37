#pragma once

#include "Batch/PairRecord.h"
#include "Reports/PassingSet.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace slatewise {

/// The two report sets of a finished pair, in the archive and on the destination: made under
/// passing names first, and put in place when all of them is known. What fails is told by the
/// record, and whatever says otherwise is made anew or taken away. A disk that is not the chosen
/// one any more gets none, nor does an archive that has gone. Blocks; one thread at a time.
class PairSets {
public:
    /// All three folders of the pair are held. The record must outlive it.
    explicit PairSets(PairRecord& record);

    /// Makes both, with what the record says now. A set that has no room in the archive may have it
    /// on the disk, and one whose pages cannot be made has its lists.
    void make();

    /// Makes them again where more is known by now than they tell.
    void bringUpToDate();

    /// `isAwaited` as `PairTraces::leave` has it, of the second step and the last.
    void putInPlace(const std::function<bool()>& isPlacedInTime,
                    const std::function<bool()>& isEndedInTime);

    /// Where they stand. Empty paths: not written.
    const std::filesystem::path& inArchive() const { return inArchive_; }
    const std::filesystem::path& onDestination() const { return onDestination_; }
    /// The one of them whose pages are best looked at.
    const std::filesystem::path& shown() const;

    /// What lies beneath a disk that is gone is none of ours.
    bool isDiskInPlace() const { return disk_.isStillAtItsPath(); }

private:
    void makeAgain(bool inArchive, bool onDisk);
    void makeInArchive();
    void makeOnDisk();
    bool write(const RootFolder& folder, const std::string& place);
    void copyFromArchive(const RootFolder& passing) const;

    void putDisksInPlace();
    void putArchivesInPlace();
    bool put(std::optional<PassingSet>& set, const RootFolder& root, OffloadProblem::Kind kind,
             const std::string& place);
    bool hasNews() const { return record_.problemCount() != told_; }
    bool takeBack(std::optional<PassingSet>& set, std::filesystem::path& place);

    std::string claimName() const;
    std::string claimOnDisk() const;
    std::string wantedName() const;
    void giveUpClaims() const;
    bool isArchiveTheDisk() const;
    bool isArchiveOnDisk() const;

    PairRecord& record_;
    const RootFolder& archive_;
    const RootFolder& disk_;
    /// Of the set's folder, wherever it lies.
    std::string name_;
    /// Else it may be somebody else's there.
    bool isClaimedInArchive_ = false;
    /// On their way and in place. Empty where there is none.
    std::optional<PassingSet> archived_;
    std::optional<PassingSet> onDisk_;
    bool isArchiveWhole_ = false;
    /// How much was told when that of the archive was made, which others are copies of.
    std::size_t told_ = 0;
    std::filesystem::path inArchive_;
    std::filesystem::path onDestination_;
};

} // namespace slatewise
