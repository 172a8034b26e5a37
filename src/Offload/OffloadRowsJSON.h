#pragma once

#include "Offload/OffloadRows.h"
#include "Platform/Json.h"

/// JSON forms of the rows. Include it in source files only.
namespace slatewise {

/// Calls `visit(fieldName, manifestKey, presence, member)` for every field of a row but the media
/// facts; `member` is a
/// pointer to member. Required fields must be there when a row is read.
enum class Presence { Required, Optional };

template <typename Visit>
void forEachRowField(Visit&& visit) {
    using Row = FileCopyResult;
    visit("relativePath", "relative_path", Presence::Required, &Row::relativePath);
    visit("sizeBytes", "size_bytes", Presence::Required, &Row::sizeBytes);
    visit("mtime", "mtime", Presence::Optional, &Row::mtime);
    visit("created", "created", Presence::Optional, &Row::created);
    visit("action", "action", Presence::Required, &Row::action);
    visit("sourceSHA256", "source_sha256", Presence::Optional, &Row::sourceSHA256);
    visit("destSHA256", "dest_sha256", Presence::Optional, &Row::destSHA256);
    visit("verifyStatus", "verify_status", Presence::Required, &Row::verifyStatus);
}

/// With the field names as keys.
Json::Value toJson(const ClipEssence& essence);
void fromJson(const Json::Value& value, ClipEssence& essence);

/// Which of its two sets of keys a row is written with.
enum class RowKeys { FieldNames, Manifest };

Json::Value writeRow(const FileCopyResult& row, RowKeys keys);

/// Fails as `Json::getIfPresent` does.
void readRow(const Json::Value& value, RowKeys keys, FileCopyResult& row);

} // namespace slatewise
