#include "Offload/OffloadRowsJSON.h"

namespace slatewise {

Json::Value toJson(const ClipEssence& essence) {
    Json::Value object = Json::Value::object();
    forEachEssenceField(
        [&](const char* name, auto member) { Json::put(object, name, essence.*member); });
    return object;
}

void fromJson(const Json::Value& value, ClipEssence& essence) {
    forEachEssenceField(
        [&](const char* name, auto member) { Json::getIfPresent(value, name, essence.*member); });
}

Json::Value writeRow(const FileCopyResult& row) {
    Json::Value object = Json::Value::object();
    forEachRowField(
        [&](const char* key, Presence, auto member) { Json::put(object, key, row.*member); });
    forEachMediaField(
        [&](const char* key, auto member) { Json::put(object, key, *row.media.*member); });
    return object;
}

void readRow(const Json::Value& value, FileCopyResult& row) {
    forEachRowField([&](const char* key, Presence presence, auto member) {
        if (presence == Presence::Required)
            Json::get(value, key, row.*member);
        else
            Json::getIfPresent(value, key, row.*member);
    });
    MediaMetadata media;
    forEachMediaField(
        [&](const char* key, auto member) { Json::getIfPresent(value, key, media.*member); });
    row.media = std::move(media);
}

} // namespace slatewise
