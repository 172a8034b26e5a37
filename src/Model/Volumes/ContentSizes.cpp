#include "Model/Volumes/ContentSizes.h"

#include "Offload/PathSize.h"
#include "Offload/TreeWalker.h"

#include <algorithm>
#include <utility>

namespace slatewise {

Measurement measure(const MeasuringEntry& entry, const SkipNames& skipNames) {
    const auto copyable = entry.what == MeasuringEntry::What::CopyableBytes
                              ? TreeWalker::copyableBytes(entry.mountPoint, skipNames)
                              : 0;
    const auto capacity = PathSize::volumeBytes(entry.mountPoint);
    const auto used = entry.what == MeasuringEntry::What::CopyableBytes
                          ? copyable
                          : std::max<std::int64_t>(capacity.total - capacity.free, 0);
    return {used, capacity.total, capacity.free};
}

std::optional<MeasuringJob> ContentSizes::begin(const VolumeLists& lists, const VolumeIDs& forceIDs,
                                                const SkipNames& skipNames) {
    VolumeIDs listed;
    MeasuringJob job;
    for (const auto* list : {&lists.cards, &lists.destinations}) {
        for (const auto& volume : *list) {
            const auto id = volume.id();
            listed.insert(id);
            if (forceIDs.contains(id))
                freeBytes_.erase(id);
            if (!forceIDs.contains(id) && (usedBytes_.contains(id) || isMeasuring(id)))
                continue;
            job.entries.push_back({id, volume.facts.mountPoint,
                                   volume.kind == VolumeKind::Destination
                                       ? MeasuringEntry::What::UsedBytes
                                       : MeasuringEntry::What::CopyableBytes});
        }
    }
    std::erase_if(usedBytes_, [&](const auto& entry) { return !listed.contains(entry.first); });
    std::erase_if(freeBytes_, [&](const auto& entry) { return !listed.contains(entry.first); });
    std::erase_if(measuring_, [&](const auto& entry) { return !listed.contains(entry.first); });
    if (job.entries.empty())
        return std::nullopt;
    job.skipNames = skipNames;
    job.generation = ++generation_;
    for (const auto& entry : job.entries)
        measuring_[entry.id] = job.generation;
    return job;
}

bool ContentSizes::isWanted(int generation, std::string_view id) const {
    const auto found = measuring_.find(id);
    return found != measuring_.end() && found->second == generation;
}

bool ContentSizes::accept(int generation, const std::string& id, std::int64_t usedBytes) {
    if (!isWanted(generation, id))
        return false;
    usedBytes_[id] = usedBytes;
    measuring_.erase(id);
    return true;
}

std::optional<std::int64_t> ContentSizes::usedBytes(std::string_view id) const {
    const auto found = usedBytes_.find(id);
    return found == usedBytes_.end() ? std::nullopt : std::optional(found->second);
}

bool ContentSizes::setFreeBytes(const std::string& id, std::int64_t freeBytes) {
    const auto before = std::exchange(freeBytes_[id], freeBytes);
    return before != freeBytes;
}

std::optional<std::int64_t> ContentSizes::freeBytes(std::string_view id) const {
    const auto found = freeBytes_.find(id);
    return found == freeBytes_.end() ? std::nullopt : std::optional(found->second);
}

std::int64_t ContentSizes::totalOf(std::span<const ClassifiedVolume> volumes) const {
    std::int64_t total = 0;
    for (const auto& volume : volumes)
        total += usedBytes(volume.id()).value_or(0);
    return total;
}

bool ContentSizes::isMeasuringAny(std::span<const ClassifiedVolume> volumes) const {
    return std::any_of(volumes.begin(), volumes.end(), [&](const auto& volume) {
        return isMeasuring(volume.id()) || !usedBytes_.contains(volume.id());
    });
}

} // namespace slatewise
