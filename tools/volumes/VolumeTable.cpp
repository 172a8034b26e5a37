#include "VolumeTable.h"

#include "Platform/Numbers.h"
#include "Platform/Text.h"

#include <fmt/format.h>

#include <QString>

#include <algorithm>
#include <array>
#include <vector>

namespace slatewise::tool {

namespace {

constexpr std::size_t kColumns = 7;
using Row = std::array<QString, kColumns>;

constexpr qsizetype kGap = 2;

QString printable(std::string_view bytes) {
    return QString::fromStdString(Text::visible(bytes));
}

QString size(std::int64_t bytes) {
    return bytes == 0 ? "-" : QString::fromStdString(Numbers::byteCount(bytes));
}

Row row(const ClassifiedVolume& volume) {
    return {printable(volume.name()),
            printable(rawValue(volume.kind)),
            QString::number(volume.score),
            size(volume.facts.totalBytes),
            size(volume.facts.freeBytes),
            printable(volume.facts.mountPoint.native()),
            printable(fmt::format("{}", fmt::join(volume.reasons, ", ")))};
}

} // namespace

std::string volumeTable(std::span<const ClassifiedVolume> volumes) {
    std::vector<Row> rows = {
        {"NAME", "VERDICT", "SCORE", "SIZE", "FREE", "MOUNT POINT", "REASONS"}};
    for (const auto& volume : volumes)
        rows.push_back(row(volume));

    std::array<qsizetype, kColumns> widths{};
    for (const auto& each : rows) {
        for (std::size_t column = 0; column < kColumns; ++column)
            widths[column] = std::max(widths[column], each[column].size() + kGap);
    }
    QString table;
    for (const auto& each : rows) {
        for (std::size_t column = 0; column + 1 < kColumns; ++column)
            table += each[column].leftJustified(widths[column]);
        table += each.back() + '\n';
    }
    return table.toStdString();
}

} // namespace slatewise::tool
