#include "Service/OutboxPayload.h"

#include "Platform/Error.h"
#include "Platform/Json.h"
#include "Reports/ManifestJSON.h"
#include "Storage/AppDatabase.h"

#include <algorithm>

namespace slatewise {

namespace {

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
    visit("inventoryJSON", &OutboxPayload::inventoryJSON);
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

OutboxPayload payloadFrom(const Json::Value& object) {
    OutboxPayload payload;
    forEachPayloadField([&](const char* key, auto member) { read(object, key, payload.*member); });
    for (const auto& file : object.at("files").get_ref<const Json::Value::array_t&>()) {
        auto& entry = payload.files.emplace_back();
        forEachFileField([&](const char* key, auto member) { read(file, key, entry.*member); });
    }
    return payload;
}

double megabytesPerSecond(const OffloadOutcome& outcome) {
    using Seconds = std::chrono::duration<double>;
    constexpr Seconds kShortest(0.001);
    constexpr double kBytesPerMegabyte = 1'000'000;
    const auto duration = std::max(Seconds(outcome.finishedAt - outcome.startedAt), kShortest);
    return static_cast<double>(outcome.bytesCopied) / duration.count() / kBytesPerMegabyte;
}

} // namespace

std::string OutboxPayload::encoded() const {
    Json::Value object = Json::Value::object();
    forEachPayloadField(
        [&](const char* key, auto member) { Json::put(object, key, this->*member); });
    auto& list = object["files"] = Json::Value::array();
    for (const auto& file : files) {
        auto& entry = list.emplace_back(Json::Value::object());
        forEachFileField(
            [&](const char* key, auto member) { Json::put(entry, key, file.*member); });
    }
    return Json::compactText(object);
}

OutboxPayload OutboxPayload::decode(std::string_view text) {
    try {
        return payloadFrom(Json::Value::parse(text));
    } catch (const Json::Value::exception& failure) {
        throw Error(std::string("not a report of a session: ") + failure.what());
    }
}

OutboxPayload makePayload(const OffloadOutcome& outcome, const ClassifiedVolume& card,
                          const SessionManifest& manifest) {
    OutboxPayload payload;
    payload.inventoryJSON = ReportWriter::isoEncode(manifest);
    payload.sessionID = outcome.sessionID.text();
    payload.driveName = card.name();
    payload.totalSizeBytes = outcome.bytesCopied;
    payload.startedAt = outcome.startedAt;
    payload.finishedAt = outcome.finishedAt;
    payload.status = outcome.status;
    payload.averageSpeedMBs = megabytesPerSecond(outcome);
    payload.files.reserve(outcome.files.size());
    for (const auto& file : outcome.files)
        payload.files.push_back({(card.facts.mountPoint / file.relativePath).native(),
                                 (outcome.sessionRoot / file.relativePath).native(), file.sizeBytes,
                                 file.action});
    if (outcome.status != OutcomeStatus::Verified)
        payload.error = "verify failed";
    return payload;
}

void selfEnqueue(const OffloadOutcome& outcome, const ClassifiedVolume& card,
                 const ClassifiedVolume&, const SessionManifest& manifest, AppDatabase& database) {
    database.enqueueOutbox("session", makePayload(outcome, card, manifest).encoded());
}

} // namespace slatewise
