#pragma once

#include <filesystem>

/// The user's other applications, asked from the GUI thread. What fails there is theirs to tell.
namespace slatewise::DesktopServices {

/// Opens a file with the application the user has for its kind.
void openFile(const std::filesystem::path& file);

/// Shows what is in a folder in the user's file manager.
void showFolder(const std::filesystem::path& folder);

} // namespace slatewise::DesktopServices
