#pragma once

#include "Offload/OffloadError.h"
#include "Offload/OffloadProblem.h"
#include "Offload/OffloadRows.h"
#include "Volumes/VolumeRecords.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace slatewise {

/// Why a pair failed, where it was neither the card nor a file.
enum class PairFailure {
    None,
    /// By the user.
    Stopped,
    Other,
};

/// What became of one pair.
struct PairResult {
    /// Takes over what the run came to.
    void take(const OffloadOutcome& outcome);

    /// Failed whenever anything after the run failed too.
    OutcomeStatus status = OutcomeStatus::Failed;
    /// What the run itself came to. Empty when it was never begun or came to nothing.
    std::optional<OutcomeStatus> runStatus;
    /// Where the footage lies; empty when nothing was made there.
    std::filesystem::path sessionRoot;
    /// The report set on the destination, else the one in the archive, else empty.
    std::filesystem::path reportFolder;
    /// The page that shows the pair; empty when none could be written.
    std::optional<std::filesystem::path> page;
    /// Files that were proved or hashed.
    int filesDone = 0;
    std::int64_t bytesDone = 0;
    /// What the user is told about a failure.
    std::string message;
    /// The failure itself, where it has words in both languages.
    std::optional<OffloadError> error{};
    /// What kind of failure it is, as far as no problem tells.
    PairFailure failure = PairFailure::None;
    /// What there is to know beyond the message, a failure or not.
    std::vector<OffloadProblem> problems;
};

/// What became of a card that was to be ejected.
struct CardEnd {
    /// That it may be pulled, or why not, in the user's words.
    std::string sentence;
    bool mayBePulled = false;

    friend bool operator==(const CardEnd&, const CardEnd&) = default;
};

/// How a batch ended.
struct BatchResult {
    /// Why it ended before its time; empty when all went well.
    std::optional<std::string> message;
    /// False when it had to be refused, or was cancelled before anything was done.
    bool wasBegun = false;
    /// Nothing was to be copied.
    bool wasHashing = false;
    /// Cards that every destination has.
    VolumeIDs finishedCardIDs;
    /// Each once, on however many disks it now is.
    int filesDone = 0;
    std::int64_t bytesDone = 0;
    /// One for each card that was to be ejected.
    std::vector<CardEnd> ejects;
    /// The page of the last pair that has one, to be shown.
    std::optional<std::filesystem::path> report;
    /// In the order of the plan's pairs; those that were never begun are "failed".
    std::vector<PairResult> pairs;
};

} // namespace slatewise
