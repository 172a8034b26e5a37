#pragma once

#include "Offload/OffloadProblem.h"
#include "Offload/OffloadRows.h"
#include "Platform/Files/RootFolder.h"

#include <filesystem>
#include <span>
#include <vector>

/// A driver may write a name down as another one and find it by both, or by the one that it was
/// given alone: only a listing tells what others will find there.
namespace slatewise::KeptNames {

/// Whether the disk lists the session, a folder that is held, and every copy in it that `rows` call
/// verified. Unicode forms of one name are the same; so are upper and lower case of the folders on
/// the way to the session, which may have been there before. Gives what is wrong, and marks the
/// rows of what is not listed as failed. Never fails; blocks its caller.
std::vector<OffloadProblem> findLost(const RootFolder& disk, const std::filesystem::path& session,
                                     const RootFolder& held, std::span<FileCopyResult> rows);

} // namespace slatewise::KeptNames
