#include "Reports/SessionManifest.h"

#include "Platform/Text.h"

namespace slatewise {

std::string ManifestFile::displayDuration() const {
    const auto text = Text::trimmed(media->durationTC.value_or(""));
    return text.empty() ? "—" : text;
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
