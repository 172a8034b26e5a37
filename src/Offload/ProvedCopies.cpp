#include "Offload/ProvedCopies.h"

#include "Language/L10n.h"
#include "Offload/SHA256Hasher.h"
#include "Offload/Transfer.h"
#include "Platform/Error.h"
#include "Platform/Text.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace slatewise {

namespace {

using Kind = OffloadProblem::Kind;

} // namespace

void ProvedCopies::note(std::size_t row, const std::string& copy) {
    dates_.resize(std::max(dates_.size(), row + 1));
    dates_[row] = FileDates::of(session_.attributes(copy));
}

std::vector<OffloadProblem> ProvedCopies::findChanged(std::span<FileCopyResult> rows,
                                                      std::span<const std::string> written,
                                                      std::stop_token stop) const {
    const std::set<std::string_view> ours(written.begin(), written.end());
    const bool isThere = session_.isStillAtItsPath();
    std::vector<OffloadProblem> problems;
    if (!isThere)
        problems.push_back({Kind::CopyGone, session_.path().native()});
    for (std::size_t index = 0; index < std::min(dates_.size(), rows.size()); ++index) {
        auto& row = rows[index];
        if (row.verifyStatus != VerifyStatus::Verified || ours.contains(row.relativePath))
            continue;
        if (!isThere) {
            markFailed(row, VerifyStatus::Failed);
            continue;
        }
        auto problem = changeOf(row, dates_[index], stop);
        if (!problem)
            continue;
        markFailed(row, problem->kind == Kind::CopyDiffers ? VerifyStatus::Mismatch
                                                           : VerifyStatus::Failed);
        problems.push_back(std::move(*problem));
    }
    return problems;
}

std::optional<OffloadProblem> ProvedCopies::changeOf(FileCopyResult& row, const FileDates& proved,
                                                     const std::stop_token& stop) const {
    try {
        const auto facts = session_.attributes(row.relativePath);
        if (facts.type != FileSystem::ItemType::RegularFile || facts.sizeBytes != row.sizeBytes)
            return OffloadProblem{Kind::CopyGone, row.relativePath};
        const auto now = FileDates::of(facts);
        if (now.isOfOtherContent(proved))
            return OffloadProblem{Kind::CopyDiffers, row.relativePath};
        if (!now.isTouchedSince(proved))
            return std::nullopt;
    } catch (const PosixError&) {
        return OffloadProblem{Kind::CopyGone, row.relativePath};
    }
    return readAgain(row, stop);
}

/// Nobody knows whether it was written to or only given to another owner.
std::optional<OffloadProblem> ProvedCopies::readAgain(FileCopyResult& row,
                                                      const std::stop_token& stop) const {
    const L10n words(language_);
    const FileBeneath copy{session_, row.relativePath};
    try {
        // What was written to it may be on its way to the disk still.
        UncachedFile::openForReading(copy).sync();
        Transfer transfer;
        auto proof = Verifier::readDestination(transfer, copy,
                                               {.onBytes = {}, .onAccess = {}, .stop = stop});
        row.destSHA256 = std::move(proof.digests.sha256);
        if (!Verifier::matches(row.sourceSHA256.value_or(""), *row.destSHA256))
            return OffloadProblem{Kind::CopyDiffers, row.relativePath};
        if (!proof.mayComeFromMemory)
            return std::nullopt;
        return OffloadProblem{Kind::NotReadBack, row.relativePath,
                              words.readFromMemory(Text::legible(row.relativePath))};
    } catch (const std::exception& failure) {
        return OffloadProblem::of(Kind::NotReadBack, row.relativePath, failure, words);
    }
}

} // namespace slatewise
