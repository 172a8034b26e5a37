#pragma once

#include "Platform/Files/FileSystem.h"
#include "Reports/SessionManifest.h"

#include <streambuf>
#include <string>
#include <string_view>

/// A session manifest as text, for whoever needs the record and none of the reports.
namespace slatewise::ReportWriter {

/// The text of "manifest.json": pretty-printed JSON with sorted keys and dates in UTC.
std::string isoEncode(const SessionManifest& manifest);

/// The same, passed on piece by piece.
void isoEncode(const SessionManifest& manifest, const FileSystem::TextSink& put);

/// Reads what `isoEncode` or an older version wrote. Fails with `Error` when it is no manifest.
SessionManifest isoDecode(std::string_view text);

/// The session's id and start, its card and its destination, and nothing else. However many rows
/// there are costs no memory, and what they say no failure. Fails as `isoDecode` does.
SessionManifest isoDecodeHead(std::streambuf& bytes);

} // namespace slatewise::ReportWriter
