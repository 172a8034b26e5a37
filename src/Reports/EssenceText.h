#pragma once

#include "Language/AppLanguage.h"
#include "Offload/MediaMetadata.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Camera and clip facts as people read them. Without state.
namespace slatewise::EssenceText {

/// Between facts that share a line.
inline constexpr std::string_view separator = "  ·  ";

/// Codec and profile: "ProRes 4444".
std::optional<std::string> recordLabel(const ClipEssence& essence);

/// "1920×1080 (HD)"; sizes with a name of their own get it in parentheses.
std::optional<std::string> resolutionLabel(const ClipEssence& essence);

/// What all clips of a card share, one subject to a line: camera, software, day and place,
/// production, technical facts, lens.
std::vector<std::string> cardLines(const ClipEssence& essence, AppLanguage language);

/// One clip's facts, without what `common` says already for the whole card.
std::vector<std::string> clipLines(const ClipEssence& essence, const ClipEssence& common,
                                   AppLanguage language);

} // namespace slatewise::EssenceText
