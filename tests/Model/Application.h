#pragma once

#include "Model/QtText.h"
#include "support/Desk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <vector>

namespace slatewise::test {

/// The lines of a list, with a "+" where one is ticked.
inline QStringList names(const VolumeListModel& list) {
    QStringList result;
    for (const auto& row : list.rows())
        result << row.name + (row.selected ? "+" : "");
    return result;
}

class Application : public ::testing::Test {
protected:
    AppModel& model() { return desk.model(); }

    void pickCard(const std::filesystem::path& folder) {
        desk.choice = folder;
        model().cards()->pickFolder();
        Desk::waitUntil([&] { return listsCard(folder); });
    }

    void pickDestination(const std::filesystem::path& folder) {
        desk.choice = folder;
        model().destinations()->pickFolder();
        Desk::waitUntil([&] { return listsDestination(folder); });
    }

    bool listsCard(const std::filesystem::path& folder) {
        return lists(model().state().board.lists().cards, folder);
    }

    bool listsDestination(const std::filesystem::path& folder) {
        return lists(model().state().board.lists().destinations, folder);
    }

    Desk desk;

private:
    static bool lists(const std::vector<ClassifiedVolume>& volumes,
                      const std::filesystem::path& folder) {
        return std::any_of(volumes.begin(), volumes.end(), [&](const auto& volume) {
            return volume.facts.mountPoint == PickedFolders::normalized(folder);
        });
    }
};

} // namespace slatewise::test
