#include "Offload/ProvedCopies.h"

#include "Platform/Error.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <set>
#include <string_view>

namespace slatewise {

namespace {

using Kind = OffloadProblem::Kind;

std::int64_t modifiedSeconds(const FileSystem::Attributes& attributes) {
    return attributes.exactModified.value_or(timespec{}).tv_sec;
}

} // namespace

enum class ProvedCopies::State {
    AsProved,
    /// Nothing bears its name, or something else does, or it is not as long as it was.
    Gone,
    /// Somebody wrote into it, or put another file of its length there.
    Rewritten,
};

void ProvedCopies::note(std::size_t row, const std::string& copy) {
    modified_.resize(std::max(modified_.size(), row + 1));
    modified_[row] = modifiedSeconds(session_.attributes(copy));
}

std::vector<OffloadProblem> ProvedCopies::findChanged(std::span<FileCopyResult> rows,
                                                      std::span<const std::string> written) const {
    const std::set<std::string_view> ours(written.begin(), written.end());
    const bool isThere = session_.isStillAtItsPath();
    std::vector<OffloadProblem> problems;
    if (!isThere)
        problems.push_back({Kind::CopyGone, session_.path().native()});
    for (std::size_t index = 0; index < std::min(modified_.size(), rows.size()); ++index) {
        auto& row = rows[index];
        if (row.verifyStatus != VerifyStatus::Verified || ours.contains(row.relativePath))
            continue;
        const auto state = isThere ? stateOf(row, modified_[index]) : State::Gone;
        if (state == State::AsProved)
            continue;
        const bool isGone = state == State::Gone;
        markFailed(row, isGone ? VerifyStatus::Failed : VerifyStatus::Mismatch);
        if (isThere)
            problems.push_back({isGone ? Kind::CopyGone : Kind::CopyDiffers, row.relativePath});
    }
    return problems;
}

ProvedCopies::State ProvedCopies::stateOf(const FileCopyResult& row, std::int64_t modified) const {
    constexpr std::int64_t kCoarsest = 2;
    try {
        const auto facts = session_.attributes(row.relativePath);
        if (facts.type != FileSystem::ItemType::RegularFile || facts.sizeBytes != row.sizeBytes)
            return State::Gone;
        return std::abs(modifiedSeconds(facts) - modified) <= kCoarsest ? State::AsProved
                                                                        : State::Rewritten;
    } catch (const PosixError&) {
        return State::Gone;
    }
}

} // namespace slatewise
