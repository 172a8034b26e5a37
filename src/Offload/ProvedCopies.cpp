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

namespace slatewise {

namespace {

using Kind = OffloadProblem::Kind;

} // namespace

void ProvedCopies::note(std::size_t row, const FileSystem::Attributes& copy) {
    dates_.resize(std::max(dates_.size(), row + 1));
    dates_[row] = FileDates::of(copy, haveNumbers_);
}

ProvedCopies::Changes ProvedCopies::findChanged(std::span<FileCopyResult> rows,
                                                std::span<const std::string> written,
                                                const std::stop_token& stop) {
    const std::set<std::string_view> ours(written.begin(), written.end());
    const bool isThere = session_.isStillAtItsPath();
    Changes changes;
    if (!isThere)
        changes.problems.push_back({Kind::CopyGone, session_.path().native()});
    for (const auto& list : written) {
        if (isThere && !isWhole(list))
            changes.problems.push_back({Kind::CopyGone, list});
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
            changes.problems.push_back(std::move(*problem));
        } catch (const CancellationError&) {
            row.verifyStatus = VerifyStatus::CopiedUnverified;
            row.destSHA256.reset();
            changes.wasStopped = true;
        }
    }
    return changes;
}

/// What we wrote is never empty.
bool ProvedCopies::isWhole(const std::string& list) const {
    try {
        const auto facts = session_.attributes(list);
        return facts.type == FileSystem::ItemType::RegularFile && facts.sizeBytes > 0;
    } catch (const PosixError&) {
        return false;
    }
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
        if (!now.isTouchedSince(proved))
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
