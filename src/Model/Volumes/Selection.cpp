#include "Model/Volumes/Selection.h"

#include <algorithm>

namespace slatewise {

bool Selection::toggle(const std::string& id) {
    if (ids.erase(id) > 0)
        return false;
    tick(id);
    return true;
}

void Selection::tick(const std::string& id) {
    ids.insert(id);
    tickedLast = id;
}

void Selection::focusAny() {
    if (ids.empty())
        focused.reset();
    else
        focused = *ids.begin();
}

std::optional<std::string> Selection::target() const {
    if (focused)
        return focused;
    if (tickedLast && contains(*tickedLast))
        return tickedLast;
    return ids.empty() ? std::nullopt : std::optional(*ids.begin());
}

void Selection::keepOnly(std::span<const ClassifiedVolume> volumes) {
    const auto present = idsOf(volumes);
    std::erase_if(ids, [&](const auto& id) { return !present.contains(id); });
    if (focused && !present.contains(*focused))
        focusAny();
}

std::vector<ClassifiedVolume>
Selection::selectedOf(std::span<const ClassifiedVolume> volumes) const {
    std::vector<ClassifiedVolume> selected;
    std::copy_if(volumes.begin(), volumes.end(), std::back_inserter(selected),
                 [&](const auto& volume) { return contains(volume.id()); });
    return selected;
}

const ClassifiedVolume* findVolume(std::span<const ClassifiedVolume> volumes, std::string_view id) {
    const auto found = std::find_if(volumes.begin(), volumes.end(),
                                    [&](const auto& volume) { return volume.id() == id; });
    return found == volumes.end() ? nullptr : &*found;
}

VolumeIDs idsOf(std::span<const ClassifiedVolume> volumes) {
    VolumeIDs ids;
    for (const auto& volume : volumes)
        ids.insert(volume.id());
    return ids;
}

} // namespace slatewise
