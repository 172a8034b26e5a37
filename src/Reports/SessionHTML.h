#pragma once

#include "Language/AppLanguage.h"
#include "Platform/Files/RootFolder.h"
#include "Reports/ReportTree.h"

#include <span>
#include <string>

/// "Reports_Standart.html": the session as a foldable tree, one row of nine columns to each file.
/// Without state; any thread may ask.
namespace slatewise::SessionHTML {

/// `tree` is the manifest's. Fails with `PosixError` when the file cannot be written.
void write(const SessionManifest& manifest, std::span<const ReportNode> tree,
           const FileBeneath& file, AppLanguage language);

/// The whole page.
std::string document(const SessionManifest& manifest, AppLanguage language);

/// One item of the tree with everything below it.
std::string renderNode(const ReportNode& node, AppLanguage language, int depth);

} // namespace slatewise::SessionHTML
