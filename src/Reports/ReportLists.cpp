#include "Language/L10n.h"
#include "Offload/PathSize.h"
#include "Platform/Numbers.h"
#include "Platform/Text.h"
#include "Reports/ReportWriter.h"

#include <algorithm>
#include <set>

namespace slatewise::ReportWriter {

namespace {

constexpr std::string_view kInventoryHeader =
    "path,size,size_human,mtime,sha256,action,verify_status,timecode_start,timecode_end,"
    "duration_tc,duration_seconds,capture_fps,timecode_rate,timecode_drop_frame\n";

std::string escaped(const std::string& value) {
    const auto wantsQuotes = [](char character) {
        return character == ',' || character == '"' || character == '\n';
    };
    if (std::none_of(value.begin(), value.end(), wantsQuotes))
        return value;
    return "\"" + Text::replaced(value, "\"", "\"\"") + "\"";
}

std::string number(const std::optional<double>& value) {
    return value ? Numbers::shortest(*value) : "";
}

std::string flag(const std::optional<bool>& value) {
    if (!value)
        return "";
    return *value ? "true" : "false";
}

void appendRow(std::string& text, const ManifestFile& file, AppLanguage language) {
    const std::array<std::string, 14> columns = {
        escaped(Text::displayable(file.relativePath)),
        std::to_string(file.sizeBytes),
        escaped(PathSize::report(file.sizeBytes, language)),
        escaped(file.mtime ? Clock::iso8601(*file.mtime) : ""),
        file.sourceSHA256.value_or(""),
        std::string(rawValue(file.action)),
        std::string(rawValue(file.verifyStatus)),
        escaped(file.media->timecodeStart.value_or("")),
        escaped(file.media->timecodeEnd.value_or("")),
        escaped(file.media->durationTC.value_or("")),
        number(file.media->durationSeconds),
        number(file.media->captureFps),
        number(file.media->timecodeRate),
        flag(file.media->timecodeDropFrame),
    };
    for (std::size_t column = 0; column < columns.size(); ++column) {
        if (column > 0)
            text += ',';
        text += columns[column];
    }
    text += '\n';
}

/// The copy is known to be the card's, or the hash was all that was asked for.
bool isProvedOrHashed(const ManifestFile& file) {
    const bool isProved =
        file.action == RowAction::Copy && file.verifyStatus == VerifyStatus::Verified;
    const bool isHashed =
        file.action == RowAction::Hash && file.verifyStatus == VerifyStatus::Hashed;
    return file.sourceSHA256 && (isProved || isHashed);
}

/// A name with a line end in it would tear its line in two, and checking tools take a return at the
/// end of one for part of the line end. They know a form for just these names: a backslash at the
/// line's start, and escapes in the name.
std::string checksumLine(const std::string& hash, const std::string& path) {
    if (path.find('\n') == std::string::npos && !path.ends_with('\r'))
        return hash + "  " + path + "\n";
    auto name = Text::replaced(path, "\\", "\\\\");
    name = Text::replaced(Text::replaced(name, "\n", "\\n"), "\r", "\\r");
    return "\\" + hash + "  " + name + "\n";
}

} // namespace

void inventoryCSV(const SessionManifest& manifest, AppLanguage language,
                  const FileSystem::TextSink& put) {
    put(kInventoryHeader);
    std::string row;
    for (const auto& file : manifest.files) {
        row.clear();
        appendRow(row, file, language);
        put(row);
    }
}

void checksumList(const SessionManifest& manifest, const FileSystem::TextSink& put) {
    // A list that the card brought has grown since its copy was proved.
    const std::set<std::string_view> grown(manifest.hashLists.begin(), manifest.hashLists.end());
    for (const auto& file : manifest.files) {
        if (isProvedOrHashed(file) && !grown.contains(file.relativePath))
            put(checksumLine(*file.sourceSHA256, file.relativePath));
    }
}

} // namespace slatewise::ReportWriter
