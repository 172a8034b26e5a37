#pragma once

#include "Offload/CopyEngine.h"

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace slatewise::test {

/// A folder in the form in which cards and destinations travel.
ClassifiedVolume volumeAt(const std::filesystem::path& folder, const std::string& name = "A001");

/// A run of a card folder to a destination folder that lands in `<destination>/session`.
CopyEngine::Request requestFor(const std::filesystem::path& card,
                               const std::filesystem::path& destination);

/// Everything that one run told.
struct RunRecord {
    std::vector<OffloadPhase> phases;
    std::vector<std::string> log;
    std::vector<std::string> problems;

    /// Notes everything and calls `onPhase` for each phase.
    CopyEngine::Observer observer(std::function<void(const OffloadPhase&)> onPhase = {});

    /// A run to its end that nobody stops.
    OffloadOutcome run(const CopyEngine::Request& request,
                       std::function<void(const OffloadPhase&)> onPhase = {});
};

/// For `onPhase`: does something once, in the first phase of that kind, and of that file if one is
/// named.
template <typename Wanted>
std::function<void(const OffloadPhase&)> atFirst(std::function<void()> happens,
                                                 std::string file = "") {
    return [happens = std::move(happens), file = std::move(file),
            isDone = false](const OffloadPhase& phase) mutable {
        const auto* now = std::get_if<Wanted>(&phase);
        bool isMeant = now != nullptr;
        if constexpr (requires { now->file; })
            isMeant = isMeant && (file.empty() || now->file == file);
        if (isMeant && !std::exchange(isDone, true))
            happens();
    };
}

using Verdicts = std::map<std::string, std::string>;

/// "COPY/verified" and so on for every row, by its path.
Verdicts verdicts(const OffloadOutcome& outcome);

} // namespace slatewise::test
