#pragma once

#include <filesystem>
#include <vector>

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

/// Folders under which desktops mount what a user plugs in, each in one of the user's name.
inline const std::vector<std::filesystem::path> mediaRoots = {"/run/media", "/media"};

/// Where the desktop may mount what this user plugs in, and also what the desktop's user does when
/// that is another one who became this one by `sudo`: of both in each of the `roots`. They need not
/// exist, and come into being with the first card.
std::vector<std::filesystem::path>
media(const std::vector<std::filesystem::path>& roots = mediaRoots);

} // namespace slatewise::UserFolders
