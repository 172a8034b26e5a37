#pragma once

#include "support/Desk.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace slatewise::test {

/// Notes what a batch tells.
struct BatchRecord : BatchListener {
    void batchBegan(const BatchPlan&) override { ++begun; }
    void pairBegan(const BatchPair& pair) override {
        labels.push_back(pair.position.label);
        fractions.push_back(model->batch()->fraction());
    }
    void phaseChanged(const OffloadPhase& phase) override {
        if (onPhase)
            onPhase(phase);
    }
    void problemFound(const OffloadProblem& problem) override {
        problems.push_back(problem.text(L10n(AppLanguage::English)));
    }
    void pairEnded(const BatchPair&, const PairResult& pair) override { pairs.push_back(pair); }
    void batchEnded(const BatchResult& ended) override { result = ended; }

    AppModel* model = nullptr;
    int begun = 0;
    std::vector<std::string> labels;
    std::vector<double> fractions;
    std::vector<std::string> problems;
    std::vector<PairResult> pairs;
    BatchResult result;
    std::function<void(const OffloadPhase&)> onPhase;
};

class BatchOfCards : public ::testing::Test {
protected:
    void start() {
        desk.start();
        record.model = &desk.model();
        desk.model().batch()->setListener(&record);
        for (const auto& disk : disks) {
            if (!desk.model()
                     .state()
                     .board.selection(VolumeSide::Destination)
                     .contains(disk.toStdString()))
                desk.model().destinations()->toggle(disk);
        }
    }

    /// The engine as it is, but for what `before` does ahead of run number n, from 1.
    void beforeRun(std::function<void(int)> before) {
        desk.surroundings.runEngine = [this, before = std::move(before)](
                                          const auto& request, const auto& observer, auto stop) {
            before(++runs);
            return CopyEngine::run(request, observer, stop);
        };
    }

    std::string title() { return desk.model().batch()->title().toStdString(); }

    static int reportsIn(const std::filesystem::path& folder) {
        std::error_code isNone;
        if (!std::filesystem::is_directory(std::filesystem::symlink_status(folder, isNone)))
            return 0;
        return static_cast<int>(std::distance(std::filesystem::directory_iterator(folder),
                                              std::filesystem::directory_iterator()));
    }

    Desk desk;
    BatchRecord record;
    std::vector<QString> disks;
    std::atomic<int> runs = 0;
};

} // namespace slatewise::test
