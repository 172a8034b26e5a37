#include "Service/OutboxPayload.h"

#include "Platform/Error.h"
#include "Platform/Json.h"
#include "Reports/ManifestJSON.h"
#include "Storage/AppLog.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace slatewise {

namespace {

constexpr const char* kFiles = "files";
constexpr const char* kInventory = "inventoryJSON";

template <typename Visit>
void forEachFileField(Visit&& visit) {
    visit("sourcePath", &OutboxFile::sourcePath);
    visit("targetPath", &OutboxFile::targetPath);
    visit("fileSize", &OutboxFile::fileSize);
    visit("action", &OutboxFile::action);
}

/// All but the files, which are records themselves.
template <typename Visit>
void forEachPayloadField(Visit&& visit) {
    visit("sessionID", &OutboxPayload::sessionID);
    visit("driveName", &OutboxPayload::driveName);
    visit("totalSizeBytes", &OutboxPayload::totalSizeBytes);
    visit("startedAt", &OutboxPayload::startedAt);
    visit("finishedAt", &OutboxPayload::finishedAt);
    visit("status", &OutboxPayload::status);
    visit("averageSpeedMBs", &OutboxPayload::averageSpeedMBs);
    visit(kInventory, &OutboxPayload::inventoryJSON);
    visit("error", &OutboxPayload::error);
}

template <typename T>
void read(const Json::Value& object, const char* key, T& result) {
    Json::get(object, key, result);
}
template <typename T>
void read(const Json::Value& object, const char* key, std::optional<T>& result) {
    Json::getIfPresent(object, key, result);
}

OutboxFile fileFrom(const Json::Value& object) {
    OutboxFile file;
    forEachFileField([&](const char* key, auto member) { read(object, key, file.*member); });
    return file;
}

/// Reads each file as soon as its text has been, and keeps no more of it: a million of them would
/// take a gigabyte as objects of the library.
OutboxPayload payloadFrom(std::string_view text) {
    using Event = Json::Value::parse_event_t;
    OutboxPayload payload;
    bool isAmongFiles = false;
    const auto object = Json::Value::parse(text, [&](int depth, Event event, Json::Value& value) {
        constexpr int kInPayload = 1;
        constexpr int kInFiles = 2;
        if (event == Event::key && depth == kInPayload) {
            isAmongFiles = value == kFiles;
            // Of a key that is there twice the last counts.
            if (isAmongFiles)
                payload.files.clear();
        }
        if (event != Event::object_end || depth != kInFiles || !isAmongFiles)
            return true;
        payload.files.push_back(fileFrom(value));
        return false;
    });
    forEachPayloadField([&](const char* key, auto member) { read(object, key, payload.*member); });
    if (!object.at(kFiles).get_ref<const Json::Value::array_t&>().empty())
        throw Error("not a report of a session: a file is no object");
    return payload;
}

double megabytesPerSecond(const SessionManifest& manifest) {
    using Seconds = std::chrono::duration<double>;
    constexpr Seconds kShortest(0.001);
    constexpr double kBytesPerMegabyte = 1'000'000;
    const auto duration = std::max(Seconds(manifest.finishedAt - manifest.startedAt), kShortest);
    return static_cast<double>(manifest.counts.bytesCopied) / duration.count() / kBytesPerMegabyte;
}

/// All but the files and the inventory, which can be long.
OutboxPayload headOf(const SessionManifest& manifest) {
    OutboxPayload head;
    head.sessionID = manifest.sessionID;
    head.driveName = manifest.card.name;
    head.totalSizeBytes = manifest.counts.bytesCopied;
    head.startedAt = manifest.startedAt;
    head.finishedAt = manifest.finishedAt;
    head.status = manifest.status;
    head.averageSpeedMBs = megabytesPerSecond(manifest);
    if (manifest.status != OutcomeStatus::Verified)
        head.error = "verify failed";
    return head;
}

std::string fileText(const SessionManifest& manifest, const ManifestFile& file) {
    const std::filesystem::path card = manifest.card.mountPoint;
    const std::filesystem::path session = manifest.destination.sessionRoot;
    const OutboxFile entry{(card / file.relativePath).native(),
                           (session / file.relativePath).native(), file.sizeBytes, file.action};
    Json::Value object = Json::Value::object();
    forEachFileField([&](const char* key, auto member) { Json::put(object, key, entry.*member); });
    return Json::compactText(object);
}

void putFiles(const SessionManifest& manifest, const FileSystem::TextSink& put) {
    put("[");
    bool isFirst = true;
    for (const auto& file : manifest.files)
        put((std::exchange(isFirst, false) ? "" : ",") + fileText(manifest, file));
    put("]");
}

/// False where the manifest is longer than any service would take in one request.
bool hasInventory(const SessionManifest& manifest) {
    constexpr std::size_t kMostFiles = 250'000;
    return manifest.files.size() <= kMostFiles;
}

/// The manifest's text as one JSON string; of an empty object where there is none.
void putInventory(const SessionManifest& manifest, const FileSystem::TextSink& put) {
    if (!hasInventory(manifest))
        return put(Json::compactText("{}"));
    put("\"");
    ReportWriter::isoEncode(manifest, [&](std::string_view text) {
        const auto quoted = Json::compactText(Json::Value(text));
        put(std::string_view(quoted).substr(1, quoted.size() - 2));
    });
    put("\"");
}

} // namespace

void writePayload(const SessionManifest& manifest, const FileSystem::TextSink& put) {
    const auto head = headOf(manifest);
    Json::Value object = Json::Value::object();
    forEachPayloadField(
        [&](const char* key, auto member) { Json::put(object, key, head.*member); });
    object[kFiles] = nullptr;
    bool isFirst = true;
    for (const auto& [key, value] : object.items()) {
        put((std::exchange(isFirst, false) ? "{" : ",") + Json::compactText(key) + ":");
        if (key == kFiles)
            putFiles(manifest, put);
        else if (key == kInventory)
            putInventory(manifest, put);
        else
            put(Json::compactText(value));
    }
    put("}");
}

OutboxPayload OutboxPayload::decode(std::string_view text) {
    try {
        return payloadFrom(text);
    } catch (const Json::Value::exception& failure) {
        throw Error(std::string("not a report of a session: ") + failure.what());
    }
}

QueuedReport queuedReport(const SessionManifest& manifest) {
    return {"session", [&manifest](const FileSystem::TextSink& put) {
                if (!hasInventory(manifest))
                    AppLog::append(fmt::format("Outbox: no inventory of {} with its {} files",
                                               manifest.sessionID, manifest.files.size()));
                writePayload(manifest, put);
            }};
}

} // namespace slatewise
