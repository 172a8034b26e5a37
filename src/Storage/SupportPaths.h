#pragma once

#include <filesystem>
#include <string_view>

namespace slatewise {

struct OffloadSettings;

/// Where the application keeps what is the user's. A folder that cannot be made is given all the
/// same: whoever writes into it learns why.
namespace SupportPaths {

/// "Slatewise DIT" among the user's application data, made if missing.
std::filesystem::path applicationSupport();

/// "Logs/Slatewise DIT" in the user's library folder, made if missing.
std::filesystem::path logsDirectory();

/// A file in `applicationSupport`.
std::filesystem::path databaseURL(std::string_view fileName = "dit.sqlite");

/// "SlatewiseDIT" among the user's documents. Not made.
std::filesystem::path defaultReportsDirectory();

/// The folder of the local report archive: the one the user chose, else the default one. Not made,
/// and no disk is asked.
std::filesystem::path reportsArchivePath(const OffloadSettings& settings);

/// The same; the default one is made if missing. One that was chosen and is missing is not: its
/// disk is not there. Blocks as long as its disk does.
std::filesystem::path reportsArchive(const OffloadSettings& settings);

} // namespace SupportPaths

} // namespace slatewise
