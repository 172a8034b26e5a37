#pragma once

#include <filesystem>

/// Where a user's files of each kind live, by the XDG variables and the habits of desktops. Nothing
/// is created here.
namespace slatewise::UserFolders {

/// `XDG_DATA_HOME`, else `~/.local/share`.
std::filesystem::path applicationSupport();

/// `XDG_STATE_HOME`, else `~/.local/state`: what an application leaves besides its data, such as
/// logs.
std::filesystem::path library();

/// `XDG_CONFIG_HOME`, else `~/.config`.
std::filesystem::path configuration();

/// The environment's `XDG_DOCUMENTS_DIR`, else the folder set in `user-dirs.dirs`, else
/// `~/Documents`.
std::filesystem::path documents();

/// Where the desktop mounts what this user plugs in: `/run/media/<user>` on a system that has
/// `/run/media`, else `/media/<user>`.
std::filesystem::path media();

} // namespace slatewise::UserFolders
