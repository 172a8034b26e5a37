#include "Reports/SessionManifest.h"

#include "Platform/Text.h"

namespace slatewise {

std::string displayDuration(const ManifestFile& file) {
    const auto text = Text::trimmed(file.media->durationTC.value_or(""));
    return text.empty() ? "—" : text;
}

bool SessionManifest::wasHashing() const {
    return isHashOnly || counts.filesHashed > 0 || status == OutcomeStatus::Hashed;
}

std::int64_t SessionManifest::bytesHandled() const {
    if (counts.filesHashed == 0)
        return counts.bytesCopied;
    std::int64_t bytes = 0;
    for (const auto& file : files)
        bytes += file.action == RowAction::Hash ? file.sizeBytes : 0;
    return bytes;
}

ClipEssence SessionManifest::cardEssence() const {
    std::vector<const ClipEssence*> essences;
    for (const auto& file : files) {
        if (file.media->essence)
            essences.push_back(&*file.media->essence);
    }
    return ClipEssence::common(essences);
}

} // namespace slatewise
