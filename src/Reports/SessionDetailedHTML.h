#pragma once

#include "Language/AppLanguage.h"
#include "Platform/Files/RootFolder.h"
#include "Reports/ReportTree.h"

#include <span>
#include <string>

/// "Reports_Detailed.html": the tree of the standard page with the clips' camera facts. What all
/// clips share stands once, above the tree; a clip shows only what differs. Without state; any
/// thread may ask.
namespace slatewise::SessionDetailedHTML {

/// `tree` is the manifest's. Fails with `PosixError` when the file cannot be written.
void write(const SessionManifest& manifest, std::span<const ReportNode> tree,
           const FileBeneath& file, AppLanguage language);

/// The whole page.
std::string document(const SessionManifest& manifest, AppLanguage language);

/// One item of the tree with everything below it; `common` is what the card's row says already.
std::string renderNode(const ReportNode& node, const ClipEssence& common, AppLanguage language,
                       int depth);

} // namespace slatewise::SessionDetailedHTML
