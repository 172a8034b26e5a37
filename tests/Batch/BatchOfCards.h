#pragma once

#include "Platform/Text.h"
#include "support/Desk.h"
#include "support/Process.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <initializer_list>
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

    /// The program started anew, the card ticked and given a unit, and the button pressed; returns
    /// when all is over.
    void copy(const QString& card) {
        start();
        desk.selectCard(card, "CamA");
        desk.copy();
    }

    /// Ends the program and takes away its volumes and these folders, for the next case.
    void clear(std::initializer_list<const char*> folders = {}) {
        desk.quit();
        desk.volumes.clear();
        runs = 0;
        for (const auto* name : folders)
            std::filesystem::remove_all(desk.folder / name);
    }

    /// From a worker: does it on the thread of the model, and returns when it is done.
    static void onDesk(const std::function<void()>& happens) {
        QMetaObject::invokeMethod(QCoreApplication::instance(), happens,
                                  Qt::BlockingQueuedConnection);
    }

    /// The engine as it is, but for what `before` does ahead of run number n, from 1.
    void beforeRun(std::function<void(int)> before) {
        desk.surroundings.runEngine = [this, before = std::move(before)](
                                          const auto& request, const auto& observer, auto stop) {
            before(++runs);
            return CopyEngine::run(request, observer, stop);
        };
    }

    /// The engine as it is, but for what `behind` does between a run and its traces.
    void behindRun(std::function<void(const OffloadOutcome&)> behind) {
        desk.surroundings.runEngine = [this, behind = std::move(behind)](
                                          const auto& request, const auto& observer, auto stop) {
            ++runs;
            auto outcome = CopyEngine::run(request, observer, stop);
            behind(outcome);
            return outcome;
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
