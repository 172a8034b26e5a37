#include "Model/VolumeListModel.h"

#include <gtest/gtest.h>

#include <QPersistentModelIndex>

#include <map>
#include <string>

using namespace slatewise;

namespace {

std::vector<VolumeRow> rowsOf(const std::string& ids, const QString& subtitle) {
    std::vector<VolumeRow> rows;
    for (const char id : ids) {
        auto& row = rows.emplace_back();
        row.volumeID = QLatin1Char(id);
        row.subtitle = subtitle;
    }
    return rows;
}

} // namespace

// Whatever comes, goes or moves: a row that stays is the same row to a view.
TEST(VolumeListModel, VolumesThatStayKeepTheirRows) {
    const struct {
        const char* before;
        const char* after;
    } cases[] = {
        {"", "ab"},      {"ab", ""},       {"abc", "abc"},   {"abc", "xabc"},
        {"abc", "abxc"}, {"abc", "bc"},    {"abcd", "ad"},   {"abc", "cab"},
        {"abc", "bca"},  {"abcd", "dcba"}, {"abcd", "exbf"}, {"abc", "xyz"},
    };
    for (const auto& [before, after] : cases) {
        VolumeListModel model;
        model.setRows(rowsOf(before, "1 GB"));
        std::map<QString, QPersistentModelIndex> held;
        for (int row = 0; row < model.count(); ++row) {
            const auto index = model.index(row);
            held[index.data(VolumeListModel::VolumeID).toString()] = index;
        }
        int countChanges = 0;
        int resets = 0;
        QObject::connect(&model, &VolumeListModel::countChanged, [&] { ++countChanges; });
        QObject::connect(&model, &VolumeListModel::modelReset, [&] { ++resets; });

        model.setRows(rowsOf(after, "2 GB"));
        EXPECT_EQ(model.rows(), rowsOf(after, "2 GB")) << before << " to " << after;
        for (const auto& [id, index] : held) {
            const bool stays = QString(after).contains(id);
            EXPECT_EQ(index.isValid(), stays) << before << " to " << after;
            EXPECT_EQ(index.data(VolumeListModel::VolumeID).toString(), stays ? id : QString());
        }
        EXPECT_EQ(resets, 0);
        EXPECT_EQ(countChanges, std::string(before).size() == std::string(after).size() ? 0 : 1);
    }
}
