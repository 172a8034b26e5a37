#pragma once

#include "Batch/BatchPlan.h"
#include "Platform/Error.h"
#include "Platform/Files/RootFolder.h"

#include <QCoro/QCoroTask>

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <vector>

namespace slatewise {

/// The folders of a batch's cards and disks, held from its beginning on. GUI thread.
class HeldFolders {
public:
    /// Takes hold of all that a plan names, each on a worker of its own, before anything else is
    /// asked of them. One that is not there, or not the one that was chosen, is not held; nor is
    /// one that does not answer within `patience`. Ends at once when a stop is requested.
    static QCoro::Task<HeldFolders> of(BatchPlan plan, std::stop_token stop,
                                       std::chrono::milliseconds patience);

    /// The plan's cards and disks that are held, in their order.
    BatchPlan heldPart(BatchPlan plan) const;

    /// The folders of the plan's disks that are held.
    std::vector<std::shared_ptr<const RootFolder>> disksOf(const BatchPlan& plan) const;

    /// Why the pair cannot be begun; empty when both are held.
    std::optional<OffloadProblem> findMissing(const BatchPair& pair) const;

    /// Of a destination where no disk is mounted, though one is meant to be.
    std::optional<OffloadProblem> findNotMounted(const BatchPair& pair) const;

    /// Null when it is not held.
    std::shared_ptr<const RootFolder> at(const std::filesystem::path& mountPoint) const;

    /// Gives it to the caller, who may let go of it.
    std::shared_ptr<const RootFolder> release(const std::filesystem::path& mountPoint);

private:
    struct Look;

    /// Nothing for what is not there; no entry for what has not answered.
    std::map<std::filesystem::path, std::shared_ptr<const RootFolder>> folders_;
    /// Of those that are there, as far as anybody knows, and could not be opened.
    std::map<std::filesystem::path, PosixError> failures_;
    /// Destinations beneath which the system's disk lies.
    std::set<std::filesystem::path> bare_;
};

} // namespace slatewise
