#include "Offload/MediaMetadata.h"

namespace slatewise {

namespace {

/// The value shared by all that have one.
template <typename Member>
auto agreed(std::span<const ClipEssence* const> essences, Member member) {
    std::remove_cvref_t<decltype(ClipEssence().*member)> common;
    for (const auto* essence : essences) {
        const auto& value = essence->*member;
        if (!value)
            continue;
        if (common && *common != *value)
            return decltype(common)();
        if (!common)
            common = value;
    }
    return common;
}

} // namespace

ClipEssence ClipEssence::common(std::span<const ClipEssence* const> essences) {
    ClipEssence result;
    forEachEssenceField(
        [&](const char*, auto member) { result.*member = agreed(essences, member); });
    return result;
}

} // namespace slatewise
