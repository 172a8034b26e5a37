#include "Offload/CopyProof.h"

#include "Offload/KeptNames.h"
#include "Offload/SHA256Hasher.h"
#include "Platform/Disks/DeviceCache.h"
#include "Platform/Error.h"

namespace slatewise {

namespace {

using Kind = OffloadProblem::Kind;

} // namespace

bool CopyProof::settle() {
    try {
        volume_.sync();
        return true;
    } catch (const PosixError& failure) {
        reporter_.reportFailure(Kind::NothingReadBack, disk_.path(), failure);
        return false;
    }
}

void CopyProof::dropDeviceCache() {
    isDeviceDropped_ = DeviceCache::drop(disk_.path()) != DeviceCache::Drop::NotPossible;
    if (isDeviceDropped_)
        copies_->noteDeviceDropped();
    else
        reporter_.report({Kind::ReadFromMemory, disk_.path().native()});
}

bool CopyProof::prove(std::span<FileCopyResult> rows) {
    std::vector<std::size_t> toProve;
    std::int64_t bytes = 0;
    for (std::size_t index = 0; index < rows.size(); ++index) {
        if (rows[index].action != RowAction::Copy)
            continue;
        toProve.push_back(index);
        bytes += rows[index].sizeBytes;
    }
    bool allProved = true;
    CopyProgress progress(static_cast<int>(toProve.size()), bytes);
    ReadBackAhead copies(transfer_, copies_->folder(), rows, toProve);
    for (std::size_t position = 0; position < toProve.size(); ++position) {
        transfer_.throwIfCancelled();
        const auto index = toProve[position];
        auto& row = rows[index];
        try {
            copies_->note(index, readBack(row, position, progress, copies));
        } catch (const std::exception& failure) {
            reporter_.reportFailure(Kind::NotReadBack, row.relativePath, failure,
                                    disk_.path() / session_ / row.relativePath);
            markFailed(row, VerifyStatus::Failed);
        }
        allProved = allProved && row.verifyStatus == VerifyStatus::Verified;
    }
    noteWhatMemoryKept();
    return allProved;
}

bool CopyProof::findsCopiesInPlace(std::span<FileCopyResult> rows) {
    return reportAll(copies_->findChanges(rows, transfer_.stop()));
}

bool CopyProof::findsNamesKept(std::span<FileCopyResult> rows) {
    return reportAll(KeptNames::findLost(disk_, session_, copies_->folder(), rows));
}

bool CopyProof::reportAll(const std::vector<OffloadProblem>& problems) {
    for (const auto& problem : problems)
        reporter_.report(problem);
    return problems.empty();
}

bool CopyProof::findsDiskUndamaged() {
    const bool hasErrors = errors_.haveGrown();
    if (hasErrors)
        reporter_.report({Kind::FileSystemErrors, disk_.path().native()});
    return !hasErrors;
}

FileSystem::Attributes CopyProof::readBack(FileCopyResult& row, std::size_t position,
                                           CopyProgress& progress, ReadBackAhead& copies) {
    std::int64_t bytesRead = 0;
    const auto publishFigures = [&] {
        reporter_.publish(progress.verifying(row.relativePath, static_cast<int>(position),
                                             bytesRead, row.sizeBytes,
                                             SpeedMeter::Time::clock::now()));
    };
    publishFigures();
    const auto watch = transfer_.watch(row.relativePath, [&](std::size_t count) {
        const auto bytes = static_cast<std::int64_t>(count);
        bytesRead += bytes;
        progress.add(bytes, SpeedMeter::Time::clock::now());
        publishFigures();
    });
    auto proof = copies.read(position, watch);
    if (proof.mayComeFromMemory)
        keptInMemory_.push_back(row.relativePath);
    row.destSHA256 = std::move(proof.digests.sha256);
    auto& further = proof.digests.further;
    const bool isProved = Verifier::matches(row.sourceSHA256.value_or(""), *row.destSHA256) &&
                          further == row.further->source;
    if (!further.empty())
        row.further.edit().hashedAt = Clock::now();
    if (isProved) {
        row.verifyStatus = VerifyStatus::Verified;
        return proof.attributes;
    }
    if (!further.empty())
        row.further.edit().readBack = std::move(further);
    reporter_.report(
        {Kind::CopyDiffers, row.relativePath,
         "source " + row.sourceSHA256.value_or("") + " destination " + *row.destSHA256});
    markFailed(row, VerifyStatus::Mismatch);
    return proof.attributes;
}

/// A few files by their names; where it is more, it is the disk.
void CopyProof::noteWhatMemoryKept() {
    constexpr std::size_t kFew = 3;
    if (!isDeviceDropped_ || keptInMemory_.empty())
        return;
    if (keptInMemory_.size() > kFew)
        keptInMemory_ = {disk_.path().native()};
    for (auto& subject : keptInMemory_)
        reporter_.report({Kind::ReadFromMemory, std::move(subject)});
}

} // namespace slatewise
