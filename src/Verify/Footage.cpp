#include "Verify/Footage.h"

#include "MediaHashList/Generation.h"
#include "Platform/Text.h"

#include <utility>

namespace slatewise::Verify {

Footage::Footage(const SessionManifest* own, std::filesystem::path root)
    : own_(own), root_(std::move(root)) {}

bool Footage::has(const std::filesystem::path& file) {
    const auto below = file.lexically_relative(root_).native();
    if (!own_ || !MediaHashList::leadsDown(below))
        return false;
    // Most sessions have no folder of reports, and a million files.
    if (names_.empty()) {
        for (const auto& each : own_->files) {
            if (each.action != RowAction::Skip)
                names_.insert(Text::composed(each.relativePath));
        }
    }
    return names_.contains(Text::composed(Text::displayable(below)));
}

} // namespace slatewise::Verify
