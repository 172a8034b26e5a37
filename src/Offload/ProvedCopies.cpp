#include "Offload/ProvedCopies.h"

#include "Language/L10n.h"
#include "Offload/SHA256Hasher.h"
#include "Offload/Transfer.h"
#include "Platform/Disks/DeviceCache.h"
#include "Platform/Error.h"
#include "Platform/Text.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

namespace slatewise {

namespace {

using Kind = OffloadProblem::Kind;

} // namespace

void ProvedCopies::note(std::size_t row, const FileSystem::Attributes& copy) {
    dates_.resize(std::max(dates_.size(), row + 1));
    dates_[row] = FileDates::of(copy, haveNumbers_);
}

void ProvedCopies::noteLists(std::span<const std::string> lists) {
    lists_.clear();
    for (const auto& list : lists)
        lists_.push_back(look(list));
}

std::vector<OffloadProblem> ProvedCopies::findChanges(std::span<FileCopyResult> rows,
                                                      const std::stop_token& stop) {
    std::set<std::string_view> ours;
    const bool isThere = session_.isStillAtItsPath();
    std::vector<OffloadProblem> changes;
    bool isStopTold = false;
    if (!isThere)
        changes.push_back({Kind::CopyGone, session_.path().native()});
    for (const auto& list : lists_) {
        ours.insert(list.path);
        if (isThere && !isAsNoted(list))
            changes.push_back({Kind::CopyGone, list.path});
    }
    for (std::size_t index = 0; index < std::min(dates_.size(), rows.size()); ++index) {
        auto& row = rows[index];
        if (row.verifyStatus != VerifyStatus::Verified || ours.contains(row.relativePath))
            continue;
        if (!isThere) {
            markFailed(row, VerifyStatus::Failed);
            continue;
        }
        try {
            auto problem = changeOf(row, dates_[index], stop);
            if (!problem)
                continue;
            markFailed(row, problem->kind == Kind::CopyDiffers ? VerifyStatus::Mismatch
                                                               : VerifyStatus::Failed);
            changes.push_back(std::move(*problem));
        } catch (const CancellationError&) {
            row.verifyStatus = VerifyStatus::CopiedUnverified;
            row.destSHA256.reset();
            // Whoever touches one may touch all, and their rows say the same.
            if (!std::exchange(isStopTold, true))
                changes.push_back(
                    {Kind::NotReadBack, row.relativePath, BothLanguages::of([](L10n l10n) {
                         return std::string(l10n.touchedAndStopped());
                     })});
        }
    }
    return changes;
}

ProvedCopies::List ProvedCopies::look(const std::string& path) const {
    try {
        const auto facts = session_.attributesNow(path);
        if (facts.type == FileSystem::ItemType::RegularFile)
            return {path, facts.sizeBytes, FileDates::of(facts, haveNumbers_)};
    } catch (const PosixError&) {
        // It is not there.
    }
    return {path};
}

bool ProvedCopies::isAsNoted(const List& list) const {
    const auto now = look(list.path);
    return now.sizeBytes >= 0 && now.sizeBytes == list.sizeBytes &&
           !now.dates.isOfOtherContent(list.dates) &&
           !now.dates.isTouchedSince(list.dates, areChangesKept_);
}

ProvedCopies::Found ProvedCopies::changeOf(FileCopyResult& row, FileDates& proved,
                                           const std::stop_token& stop) const {
    try {
        const auto facts = session_.attributesNow(row.relativePath);
        if (facts.type != FileSystem::ItemType::RegularFile || facts.sizeBytes != row.sizeBytes)
            return OffloadProblem{Kind::CopyGone, row.relativePath};
        const auto now = FileDates::of(facts, haveNumbers_);
        if (now.isOfOtherContent(proved))
            return OffloadProblem{Kind::CopyDiffers, row.relativePath};
        if (!now.isTouchedSince(proved, areChangesKept_))
            return std::nullopt;
    } catch (const PosixError&) {
        return OffloadProblem{Kind::CopyGone, row.relativePath};
    }
    return readAgain(row, proved, stop);
}

/// Nobody knows whether it was written to or only given to another owner. Fails with
/// `CancellationError`.
ProvedCopies::Found ProvedCopies::readAgain(FileCopyResult& row, FileDates& proved,
                                            const std::stop_token& stop) const {
    const FileBeneath copy{session_, row.relativePath};
    try {
        if (stop.stop_requested())
            throw CancellationError();
        // What was written to it may be on its way to the disk still.
        UncachedFile::openForReading(copy).sync();
        const bool mayDeviceRemember = isDeviceDropped_ && DeviceCache::drop(session_.path()) ==
                                                               DeviceCache::Drop::NotPossible;
        Transfer transfer;
        auto proof = Verifier::readDestination(transfer, copy,
                                               {.onBytes = {}, .onAccess = {}, .stop = stop});
        row.destSHA256 = std::move(proof.digests.sha256);
        if (!Verifier::matches(row.sourceSHA256.value_or(""), *row.destSHA256))
            return OffloadProblem{Kind::CopyDiffers, row.relativePath};
        if (!proof.mayComeFromMemory && !mayDeviceRemember) {
            // Of before the reading: who touches it meanwhile has it read once more.
            proved = FileDates::of(proof.attributes, haveNumbers_);
            return std::nullopt;
        }
        return OffloadProblem{Kind::NotReadBack, row.relativePath,
                              BothLanguages::of([&](L10n l10n) {
                                  return l10n.readFromMemory(Text::legible(row.relativePath));
                              })};
    } catch (const CancellationError&) {
        throw;
    } catch (const std::exception& failure) {
        return OffloadProblem::of(Kind::NotReadBack, row.relativePath, failure);
    }
}

} // namespace slatewise
