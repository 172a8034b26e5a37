#include "Model/ChoiceListModel.h"

#include <gtest/gtest.h>

#include <QPersistentModelIndex>

#include <map>
#include <string>

using namespace slatewise;

namespace {

std::vector<Choice> rowsOf(const std::string& ids, const QString& name) {
    std::vector<Choice> rows;
    for (const char id : ids)
        rows.push_back({QString(QLatin1Char(id)), name, {}, false});
    return rows;
}

constexpr int kValue = Qt::UserRole; // the first property of a choice

} // namespace

// Whatever comes, goes or moves: a row that stays is the same row to a view.
TEST(RowChanges, WhatStaysKeepsItsRow) {
    const struct {
        const char* before;
        const char* after;
    } cases[] = {
        {"", "ab"},      {"ab", ""},       {"abc", "abc"},   {"abc", "xabc"},
        {"abc", "abxc"}, {"abc", "bc"},    {"abcd", "ad"},   {"abc", "cab"},
        {"abc", "bca"},  {"abcd", "dcba"}, {"abcd", "exbf"}, {"abc", "xyz"},
    };
    for (const auto& [before, after] : cases) {
        ChoiceListModel model;
        model.setRows(rowsOf(before, "1 GB"));
        std::map<QString, QPersistentModelIndex> held;
        for (int row = 0; row < model.rowCount(); ++row) {
            const auto index = model.index(row);
            held[index.data(kValue).toString()] = index;
        }
        int resets = 0;
        QObject::connect(&model, &ChoiceListModel::modelReset, [&] { ++resets; });

        model.setRows(rowsOf(after, "2 GB"));
        EXPECT_EQ(model.rows(), rowsOf(after, "2 GB")) << before << " to " << after;
        for (const auto& [id, index] : held) {
            const bool stays = QString(after).contains(id);
            EXPECT_EQ(index.isValid(), stays) << before << " to " << after;
            EXPECT_EQ(index.data(kValue).toString(), stays ? id : QString());
        }
        EXPECT_EQ(resets, 0);
    }
}
