#pragma once

#include "Platform/Text.h"
#include "support/Desk.h"
#include "support/Process.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace slatewise::test {

class BatchOfCards : public ::testing::Test {
protected:
    void start() {
        desk.start();
        const auto* batch = desk.model().batch();
        QObject::connect(batch, &BatchControl::changed, batch, [this, batch] {
            const auto& label = batch->position().label;
            if (label.empty() || (!labels.empty() && labels.back() == label))
                return;
            labels.push_back(label);
            fractions.push_back(batch->fraction());
        });
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

    /// What came of the batch that ran last.
    const BatchResult& result() { return desk.model().batch()->lastResult().value(); }
    std::string title() { return desk.model().batch()->title().toStdString(); }

    static int reportsIn(const std::filesystem::path& folder) {
        std::error_code isNone;
        if (!std::filesystem::is_directory(std::filesystem::symlink_status(folder, isNone)))
            return 0;
        return static_cast<int>(std::distance(std::filesystem::directory_iterator(folder),
                                              std::filesystem::directory_iterator()));
    }

    /// How many lines of the log hold these words.
    int linesOfLogWith(const std::string& words) const {
        int count = 0;
        const auto log = logOfUserIn(desk.folder / "user");
        for (const auto line : Text::pieces(log, '\n'))
            count += line.find(words) != std::string_view::npos ? 1 : 0;
        return count;
    }

    Desk desk;
    /// Of each pair, as it begins.
    std::vector<std::string> labels;
    std::vector<double> fractions;
    std::vector<QString> disks;
    std::atomic<int> runs = 0;
};

} // namespace slatewise::test
