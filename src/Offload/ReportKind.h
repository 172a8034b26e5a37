#pragma once

#include <string>
#include <string_view>

namespace slatewise {

/// What kind of thing a name stands for, by its extension. Video and audio are what the media probe
/// looks into.
enum class ReportKind { Folder, Video, Audio, Image, Sidecar, File };

/// The kind's name in pages and scripts: "folder", "video", ...
std::string_view rawValue(ReportKind kind);

/// The kind of a file; a folder is `Folder` whatever its name. Only the last part of a path counts.
ReportKind reportKindOf(std::string_view fileName);

/// What stands behind the last dot of a file's name, lower-cased where it is ASCII. A dot at the
/// start of the name only hides the file.
std::string lowercasedExtension(std::string_view fileName);

} // namespace slatewise
