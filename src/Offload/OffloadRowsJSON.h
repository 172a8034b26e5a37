#pragma once

#include "Offload/OffloadRows.h"
#include "Platform/Json.h"

/// JSON forms of the rows. Include it in source files only.
namespace slatewise {

/// Required fields must be there when a row is read.
enum class Presence { Required, Optional };

/// Calls `visit(key, presence, member)` for every field of a row but the media facts; `member` is a
/// pointer to member.
template <typename Visit>
void forEachRowField(Visit&& visit) {
    using Row = FileCopyResult;
    visit("relative_path", Presence::Required, &Row::relativePath);
    visit("size_bytes", Presence::Required, &Row::sizeBytes);
    visit("mtime", Presence::Optional, &Row::mtime);
    visit("created", Presence::Optional, &Row::created);
    visit("action", Presence::Required, &Row::action);
    visit("source_sha256", Presence::Optional, &Row::sourceSHA256);
    visit("dest_sha256", Presence::Optional, &Row::destSHA256);
    visit("verify_status", Presence::Required, &Row::verifyStatus);
}

/// With the field names as keys.
Json::Value toJson(const ClipEssence& essence);
void fromJson(const Json::Value& value, ClipEssence& essence);

/// As it stands in a manifest.
Json::Value writeRow(const FileCopyResult& row);

/// Fails as `Json::getIfPresent` does.
void readRow(const Json::Value& value, FileCopyResult& row);

} // namespace slatewise
