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

Json::Value writeRow(const FileCopyResult& row, RowKeys keys) {
    Json::Value object = Json::Value::object();
    forEachRowField([&](const char* fieldName, const char* manifestKey, Presence, auto member) {
        Json::put(object, keys == RowKeys::Manifest ? manifestKey : fieldName, row.*member);
    });
    forEachMediaField([&](const char* fieldName, const char* manifestKey, auto member) {
        Json::put(object, keys == RowKeys::Manifest ? manifestKey : fieldName, *row.media.*member);
    });
    return object;
}

void readRow(const Json::Value& value, RowKeys keys, FileCopyResult& row) {
    forEachRowField(
        [&](const char* fieldName, const char* manifestKey, Presence presence, auto member) {
            const char* const key = keys == RowKeys::Manifest ? manifestKey : fieldName;
            if (presence == Presence::Required)
                Json::get(value, key, row.*member);
            else
                Json::getIfPresent(value, key, row.*member);
        });
    MediaMetadata media;
    forEachMediaField([&](const char* fieldName, const char* manifestKey, auto member) {
        Json::getIfPresent(value, keys == RowKeys::Manifest ? manifestKey : fieldName,
                           media.*member);
    });
    row.media = std::move(media);
}

} // namespace slatewise
