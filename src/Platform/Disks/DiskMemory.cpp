#include "Platform/Disks/DiskMemory.h"

#include "Platform/Disks/UDisksObjects.h"

namespace slatewise {

DiskMemory::Known DiskMemory::update(const Mounted& mounted,
                                     const std::optional<UDisksObjects>& told) {
    const std::lock_guard guard(lock_);
    const auto isGone = [&](const std::string& mount) {
        return !mounted.contains(mount);
    };
    std::erase_if(answers_, [&](const auto& answer) { return isGone(answer.first); });
    std::erase_if(givenUp_, isGone);
    doubtful_.clear();
    serviceWasThere_ |= told.has_value();

    Known known;
    for (const auto& [mount, device] : mounted) {
        if (const auto facts = told ? told->facts(device) : std::nullopt)
            (told->isUpToDate(device) ? answers_ : doubtful_)[mount] = *facts;
        if (serviceWasThere_ && !answers_.contains(mount) && !givenUp_.contains(mount))
            known.awaited.insert(mount);
    }
    known.answers = answers_;
    return known;
}

std::optional<DiskFacts> DiskMemory::giveUp(const std::string& mount) {
    const std::lock_guard guard(lock_);
    givenUp_.insert(mount);
    const auto said = doubtful_.find(mount);
    if (said == doubtful_.end())
        return std::nullopt;
    return answers_.try_emplace(mount, said->second).first->second;
}

} // namespace slatewise
