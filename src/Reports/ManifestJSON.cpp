#include "Reports/ManifestJSON.h"

#include "Offload/OffloadRowsJSON.h"
#include "Platform/Error.h"
#include "Platform/Json.h"

#include <algorithm>
#include <array>
#include <istream>

namespace slatewise {

namespace {

using Json::get;
using Json::getIfPresent;
using Json::put;

Json::Value toJson(const ManifestVolume& card) {
    Json::Value object = Json::Value::object();
    put(object, "name", card.name);
    put(object, "volume_uuid", card.volumeUUID);
    put(object, "device_identifier", card.deviceIdentifier);
    put(object, "file_system", card.fileSystem);
    put(object, "protocol", card.protocolName);
    put(object, "total_bytes", card.totalBytes);
    put(object, "mount_point", card.mountPoint);
    put(object, "camera", card.camera);
    put(object, "ekip", card.ekip);
    return object;
}

/// Only the name was ever always there.
ManifestVolume cardFrom(const Json::Value& object) {
    ManifestVolume card;
    get(object, "name", card.name);
    getIfPresent(object, "volume_uuid", card.volumeUUID);
    getIfPresent(object, "device_identifier", card.deviceIdentifier);
    getIfPresent(object, "file_system", card.fileSystem);
    getIfPresent(object, "protocol", card.protocolName);
    getIfPresent(object, "total_bytes", card.totalBytes);
    getIfPresent(object, "mount_point", card.mountPoint);
    getIfPresent(object, "camera", card.camera);
    getIfPresent(object, "ekip", card.ekip);
    card.camera = Text::pathSafeLabel(card.camera);
    card.ekip = Text::trimmed(card.ekip);
    return card;
}

Json::Value toJson(const ManifestDestination& destination) {
    Json::Value object = Json::Value::object();
    put(object, "name", destination.name);
    put(object, "volume_uuid", destination.volumeUUID);
    put(object, "mount_point", destination.mountPoint);
    put(object, "session_root", destination.sessionRoot);
    return object;
}

ManifestDestination destinationFrom(const Json::Value& object) {
    ManifestDestination destination;
    get(object, "name", destination.name);
    getIfPresent(object, "volume_uuid", destination.volumeUUID);
    get(object, "mount_point", destination.mountPoint);
    get(object, "session_root", destination.sessionRoot);
    return destination;
}

Json::Value toJson(const ManifestCounts& counts) {
    Json::Value object = Json::Value::object();
    put(object, "folders", counts.folders);
    put(object, "files_copied", counts.filesCopied);
    if (counts.filesHashed > 0)
        put(object, "files_hashed", counts.filesHashed);
    put(object, "files_skipped_system", counts.filesSkippedSystem);
    put(object, "files_failed", counts.filesFailed);
    put(object, "bytes_copied", counts.bytesCopied);
    return object;
}

ManifestCounts countsFrom(const Json::Value& object) {
    ManifestCounts counts;
    getIfPresent(object, "folders", counts.folders);
    get(object, "files_copied", counts.filesCopied);
    getIfPresent(object, "files_hashed", counts.filesHashed);
    get(object, "files_skipped_system", counts.filesSkippedSystem);
    get(object, "files_failed", counts.filesFailed);
    get(object, "bytes_copied", counts.bytesCopied);
    return counts;
}

SessionManifest manifestFrom(const Json::Value& object) {
    SessionManifest manifest;
    get(object, "schema_version", manifest.schemaVersion);
    get(object, "app", manifest.app);
    get(object, "app_version", manifest.appVersion);
    get(object, "session_id", manifest.sessionID);
    get(object, "started_at", manifest.startedAt);
    get(object, "finished_at", manifest.finishedAt);
    get(object, "status", manifest.status);
    getIfPresent(object, "hash_only", manifest.isHashOnly);
    // Of a session that ended well nothing can be but a note.
    getIfPresent(object, "problems",
                 endedWell(manifest.status) ? manifest.notes : manifest.problems);
    getIfPresent(object, "hash_lists", manifest.hashLists);
    getIfPresent(object, "skip_names", manifest.skipNames);
    get(object, "hash_algorithm", manifest.hashAlgorithm);
    manifest.card = cardFrom(object.at("card"));
    manifest.destination = destinationFrom(object.at("destination"));
    manifest.counts = countsFrom(object.at("counts"));
    for (const auto& file : object.at("files").get_ref<const Json::Value::array_t&>())
        readRow(file, manifest.files.emplace_back());
    return manifest;
}

/// Lets the parser keep what is read of the head, with no more than fields in it. Fails when the
/// text goes deeper than any manifest: what it may hold would be a matter of its length.
bool belongsToHead(int depth, Json::Value::parse_event_t event, const Json::Value& parsed) {
    using Event = Json::Value::parse_event_t;
    constexpr std::array<std::string_view, 14> kHead = {
        "session_id",  "started_at",  "card",         "destination", "name",
        "volume_uuid", "mount_point", "session_root", "file_system", "device_identifier",
        "protocol",    "total_bytes", "camera",       "ekip",
    };
    constexpr int kDeepest = 100;
    if (depth > kDeepest)
        throw Error("not a session manifest: it is too deep");
    if (event == Event::key)
        return std::find(kHead.begin(), kHead.end(), parsed.get_ref<const std::string&>()) !=
               kHead.end();
    const bool isNested = event == Event::object_start || event == Event::array_start;
    return !isNested || depth < 2;
}

/// Calls `decode`, and tells of what is no manifest in our own words.
template <typename Decode>
SessionManifest decoded(Decode&& decode) {
    try {
        return decode();
    } catch (const Json::Value::exception& failure) {
        throw Error(std::string("not a session manifest: ") + failure.what());
    }
}

} // namespace

namespace ReportWriter {

std::string isoEncode(const SessionManifest& manifest) {
    std::string text;
    isoEncode(manifest, [&](std::string_view piece) { text += piece; });
    return text;
}

void isoEncode(const SessionManifest& manifest, const FileSystem::TextSink& put) {
    Json::Value object = Json::Value::object();
    Json::put(object, "schema_version", manifest.schemaVersion);
    Json::put(object, "app", manifest.app);
    Json::put(object, "app_version", manifest.appVersion);
    Json::put(object, "session_id", manifest.sessionID);
    Json::put(object, "started_at", manifest.startedAt);
    Json::put(object, "finished_at", manifest.finishedAt);
    Json::put(object, "status", manifest.status);
    if (manifest.isHashOnly)
        Json::put(object, "hash_only", true);
    auto problems = manifest.problems;
    problems.insert(problems.end(), manifest.notes.begin(), manifest.notes.end());
    if (!problems.empty())
        Json::put(object, "problems", problems);
    if (!manifest.hashLists.empty())
        Json::put(object, "hash_lists", manifest.hashLists);
    Json::put(object, "skip_names", manifest.skipNames);
    Json::put(object, "hash_algorithm", manifest.hashAlgorithm);
    object["card"] = toJson(manifest.card);
    object["destination"] = toJson(manifest.destination);
    object["counts"] = toJson(manifest.counts);
    Json::prettyText(
        std::move(object), "files", manifest.files.size(),
        [&](std::size_t number) { return writeRow(manifest.files[number]); }, put);
}

SessionManifest isoDecode(std::string_view text) {
    return decoded([&] { return manifestFrom(Json::Value::parse(text)); });
}

SessionManifest isoDecodeHead(std::streambuf& bytes) {
    return decoded([&] {
        std::istream text(&bytes);
        const auto object = Json::Value::parse(text, belongsToHead);
        SessionManifest manifest;
        get(object, "session_id", manifest.sessionID);
        get(object, "started_at", manifest.startedAt);
        manifest.card = cardFrom(object.at("card"));
        manifest.destination = destinationFrom(object.at("destination"));
        return manifest;
    });
}

} // namespace ReportWriter

} // namespace slatewise
