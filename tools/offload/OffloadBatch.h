#pragma once

#include "Arguments.h"
#include "ProgressDisplay.h"
#include "Texts.h"

#include "Offload/CopyEngine.h"
#include "Offload/OffloadSettings.h"
#include "Storage/AppDatabase.h"

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace slatewise::tool {

/// What became of one card on one destination. Empty paths: it never got that far.
struct PairResult {
    std::string status;
    std::filesystem::path sessionRoot;
    std::filesystem::path reportFolder;
};

/// Takes every card to every destination, one pair after the other, and leaves each pair's traces:
/// the report set in the archive and on the destination, the session in the store, a line in the
/// log. The first pair that does not end well ends the batch.
class OffloadBatch {
public:
    OffloadBatch(const Arguments& arguments, OffloadSettings settings, const Texts& texts,
                 ProgressDisplay& display, std::stop_token stop);

    /// One result per pair, cards in the outer loop; pairs that were never begun are "failed".
    std::vector<PairResult> run();

private:
    PairResult runPair(const ClassifiedVolume& card, const ClassifiedVolume& destination);
    void leaveTraces(const CopyEngine::Request& request, const OffloadOutcome& outcome,
                     PairResult& result);
    void store(const CopyEngine::Request& request, const OffloadOutcome& outcome);
    void tellOutcome(const CopyEngine::Request& request, const OffloadOutcome& outcome);
    std::string label(std::size_t card, std::size_t destination) const;

    const Arguments& arguments_;
    const OffloadSettings settings_;
    const Texts& texts_;
    ProgressDisplay& display_;
    const std::stop_token stop_;
    std::vector<ClassifiedVolume> cards_;
    std::vector<ClassifiedVolume> destinations_;
    AppDatabase database_;
};

} // namespace slatewise::tool
