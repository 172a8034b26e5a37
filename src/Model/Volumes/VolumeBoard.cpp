#include "Model/Volumes/VolumeBoard.h"

#include "Volumes/VolumeClassifier.h"

#include <algorithm>
#include <utility>

namespace slatewise {

namespace {

using Volumes = std::vector<ClassifiedVolume>;

/// Whether the place is listed, be it as a volume or as a folder of the same path.
bool holds(const Volumes& volumes, const ClassifiedVolume& volume) {
    return std::any_of(volumes.begin(), volumes.end(), [&](const auto& other) {
        return other.id() == volume.id() || other.facts.mountPoint == volume.facts.mountPoint;
    });
}

/// The folder itself, and the folder that stands behind a volume of the same path.
void erase(Volumes& folders, const ClassifiedVolume& volume) {
    std::erase_if(folders, [&](const auto& folder) {
        return folder.id() == volume.id() || folder.facts.mountPoint == volume.facts.mountPoint;
    });
}

void fillGaps(Volumes& volumes, const std::string& id, std::int64_t total, std::int64_t free) {
    const auto found = std::find_if(volumes.begin(), volumes.end(),
                                    [&](const auto& volume) { return volume.id() == id; });
    if (found == volumes.end())
        return;
    if (found->facts.totalBytes < 1 && total > 0)
        found->facts.totalBytes = total;
    if (found->facts.freeBytes < 1 && free > 0)
        found->facts.freeBytes = free;
}

void raise(Volumes& volumes, const std::string& id, std::int64_t total, std::int64_t free) {
    const auto found = std::find_if(volumes.begin(), volumes.end(),
                                    [&](const auto& volume) { return volume.id() == id; });
    if (found == volumes.end())
        return;
    found->facts.totalBytes = std::max(found->facts.totalBytes, total);
    found->facts.freeBytes = std::max(found->facts.freeBytes, free);
}

bool lacksOnlyWriting(const ClassifiedVolume& volume) {
    return volume.kind == VolumeKind::Unknown && !volume.facts.isWritable() &&
           VolumeClassifier::suitsAsDestination(volume.facts);
}

} // namespace

VolumeLists sortVolumes(std::span<const ClassifiedVolume> mounted,
                        const VolumeCorrections& corrections) {
    VolumeLists lists;
    Volumes mountedCards;
    const auto isHidden = [&](const auto& volume) {
        return corrections.hiddenVolumeIDs.contains(volume.id());
    };
    for (const auto& volume : mounted) {
        if (volume.kind != VolumeKind::CameraCard &&
            !corrections.overrideCardIDs.contains(volume.lastingID()))
            continue;
        mountedCards.push_back(volume);
        if (!isHidden(volume))
            lists.cards.push_back(volume);
    }
    for (const auto& volume : mounted) {
        if (volume.kind != VolumeKind::Destination && !lacksOnlyWriting(volume) &&
            !corrections.overrideDestIDs.contains(volume.lastingID()))
            continue;
        if (!findVolume(mountedCards, volume.id()) && !isHidden(volume))
            lists.destinations.push_back(volume);
    }
    for (const auto& folder : corrections.extraCards) {
        if (!holds(lists.cards, folder))
            lists.cards.push_back(folder);
    }
    for (const auto& folder : corrections.extraDestinations) {
        if (!holds(lists.destinations, folder) && !holds(lists.cards, folder) &&
            !holds(mountedCards, folder))
            lists.destinations.push_back(folder);
    }
    std::copy_if(mounted.begin(), mounted.end(), std::back_inserter(lists.hidden), isHidden);
    std::copy_if(mounted.begin(), mounted.end(), std::back_inserter(lists.unknownVolumes),
                 [](const auto& volume) {
                     return volume.kind == VolumeKind::System || volume.kind == VolumeKind::Unknown;
                 });
    return lists;
}

VolumeIDs restoredDestinations(const StoredDestinations& stored,
                               std::span<const ClassifiedVolume> destinations,
                               const VolumeIDs& replacements) {
    VolumeIDs restored;
    const auto restore = [&](std::string_view lastingID) {
        // A mere device name says nothing of a disk that came in place of another.
        if (!lastingID.starts_with(uuidPrefix) && replacements.contains(std::string(lastingID)))
            return;
        for (const auto& destination : destinations) {
            if (destination.lastingID() == lastingID && destination.facts.isWritable() &&
                !destination.isBare)
                restored.insert(destination.id());
        }
    };
    for (const auto& id : stored.ids)
        restore(id);
    if (restored.empty() && stored.single)
        restore(*stored.single);
    if (restored.empty() && destinations.size() == 1 &&
        !replacements.contains(destinations.front().lastingID()))
        restore(destinations.front().lastingID());
    return restored;
}

VolumeBoard::Applied VolumeBoard::apply(std::span<const ClassifiedVolume> mounted,
                                        const StoredDestinations& stored,
                                        const ExistsTest& exists) {
    auto previous = idsOf(lists_.cards);
    previous.merge(idsOf(lists_.destinations));

    for (auto* extras : {&corrections_.extraCards, &corrections_.extraDestinations})
        std::erase_if(*extras,
                      [&](const auto& folder) { return !exists(folder.facts.mountPoint); });
    const auto replaced = takeIn(mounted);
    letGoOf(replaced);
    for (const auto& id : replaced)
        previous.erase(id);
    const auto mountedIDs = idsOf(mounted);
    std::erase_if(corrections_.hiddenVolumeIDs,
                  [&](const auto& id) { return !mountedIDs.contains(id); });
    lists_ = sortVolumes(mounted, corrections_);
    cardSelection_.keepOnly(lists_.cards);
    destinationSelection_.keepOnly(lists_.destinations);
    if (destinationSelection_.ids.empty())
        destinationSelection_.ids =
            restoredDestinations(stored, lists_.destinations, replacements_);

    Applied applied;
    for (const auto* list : {&lists_.cards, &lists_.destinations}) {
        for (const auto& volume : *list) {
            if (!previous.contains(volume.id()))
                applied.appeared.insert(volume.id());
        }
    }
    for (const auto& card : lists_.cards) {
        if (seenCardIDs_.insert(card.lastingID()).second)
            applied.newCards.push_back(card);
    }
    return applied;
}

/// Gives the ids under which something else is mounted than before: another card in the same slot,
/// or the same one put in again.
VolumeIDs VolumeBoard::takeIn(std::span<const ClassifiedVolume> mounted) {
    VolumeIDs replaced;
    for (const auto& volume : mounted) {
        const auto now = volume.lastingID();
        const auto& identity = volume.facts.identity;
        auto& [known, knownIdentity] =
            known_.try_emplace(volume.id(), Known{now, identity}).first->second;
        const bool hasUUID = now.starts_with(uuidPrefix);
        const bool isOther = knownIdentity && identity && !knownIdentity->isSame(*identity);
        if (isOther || (known != now && known.starts_with(uuidPrefix))) {
            replaced.insert(volume.id());
            if (!hasUUID || known != now)
                replacements_.insert(now);
            // Nobody can say whether it is the one that was there before.
            if (!hasUUID)
                seenCardIDs_.erase(now);
        } else if (known != now && seenCardIDs_.erase(known) > 0) {
            // The same one, of which more is known by now.
            seenCardIDs_.insert(now);
        }
        known = now;
        if (identity)
            knownIdentity = identity;
    }
    return replaced;
}

/// What was ticked and taken off a list were the volumes that are gone. Nobody has been asked about
/// those that came.
void VolumeBoard::letGoOf(const VolumeIDs& replaced) {
    for (const auto& id : replaced) {
        corrections_.hiddenVolumeIDs.erase(id);
        for (auto* selection : {&cardSelection_, &destinationSelection_})
            selection->ids.erase(id);
    }
}

std::string VolumeBoard::lastingID(const std::string& id) const {
    const auto known = known_.find(id);
    return known == known_.end() ? id : known->second.lastingID;
}

VolumeIDs VolumeBoard::lastingDestIDs() const {
    VolumeIDs ids;
    for (const auto& destination : selected(VolumeSide::Destination))
        ids.insert(destination.lastingID());
    return ids;
}

const Volumes& VolumeBoard::list(VolumeSide side) const {
    return side == VolumeSide::Card ? lists_.cards : lists_.destinations;
}

Selection& VolumeBoard::selection(VolumeSide side) {
    return side == VolumeSide::Card ? cardSelection_ : destinationSelection_;
}

const Selection& VolumeBoard::selection(VolumeSide side) const {
    return side == VolumeSide::Card ? cardSelection_ : destinationSelection_;
}

Volumes& VolumeBoard::extras(VolumeSide side) {
    return side == VolumeSide::Card ? corrections_.extraCards : corrections_.extraDestinations;
}

VolumeIDs& VolumeBoard::overrides(VolumeSide side) {
    return side == VolumeSide::Card ? corrections_.overrideCardIDs : corrections_.overrideDestIDs;
}

Volumes VolumeBoard::selected(VolumeSide side) const {
    return selection(side).selectedOf(list(side));
}

const ClassifiedVolume* VolumeBoard::find(std::string_view id) const {
    const auto* card = findVolume(lists_.cards, id);
    return card ? card : findVolume(lists_.destinations, id);
}

const ClassifiedVolume* VolumeBoard::selectedCard() const {
    const auto target = cardSelection_.target();
    if (const auto* card = target ? findVolume(lists_.cards, *target) : nullptr)
        return card;
    const auto first =
        std::find_if(lists_.cards.begin(), lists_.cards.end(),
                     [&](const auto& card) { return cardSelection_.contains(card.id()); });
    return first == lists_.cards.end() ? nullptr : &*first;
}

void VolumeBoard::treatAs(VolumeSide side, const std::string& id) {
    const auto volume = lastingID(id);
    corrections_.overrideCardIDs.erase(volume);
    corrections_.overrideDestIDs.erase(volume);
    overrides(side).insert(volume);
    corrections_.hiddenVolumeIDs.erase(id);
}

void VolumeBoard::treatAsDestinations(const VolumeIDs& lastingIDs) {
    corrections_.overrideDestIDs.insert(lastingIDs.begin(), lastingIDs.end());
}

VolumeIDs VolumeBoard::wantedDestIDs() const {
    auto ids = corrections_.overrideDestIDs;
    std::erase_if(ids, [](const std::string& id) { return !id.starts_with(uuidPrefix); });
    return ids;
}

void VolumeBoard::remove(VolumeSide side, const ClassifiedVolume& volume) {
    const auto id = volume.id();
    auto& ticks = selection(side);
    ticks.ids.erase(id);
    erase(extras(side), volume);
    overrides(side).erase(volume.lastingID());
    if (!volume.isPickedFolder())
        corrections_.hiddenVolumeIDs.insert(id);
    if (ticks.focused != id)
        return;
    ticks.focusAny();
    if (ticks.focused)
        return;
    const auto& listed = list(side);
    const auto other = std::find_if(listed.begin(), listed.end(),
                                    [&](const auto& each) { return each.id() != id; });
    if (other != listed.end())
        ticks.focused = other->id();
}

void VolumeBoard::clear(VolumeSide side) {
    selection(side) = {};
    extras(side).clear();
}

void VolumeBoard::addPicked(VolumeSide side, const ClassifiedVolume& folder) {
    erase(corrections_.extraCards, folder);
    erase(corrections_.extraDestinations, folder);
    extras(side).push_back(folder);
}

bool VolumeBoard::dropPicked(VolumeSide side, const ClassifiedVolume& folder) {
    return std::erase_if(extras(side),
                         [&](const auto& picked) { return picked.id() == folder.id(); }) > 0;
}

void VolumeBoard::replacePicked(VolumeSide side, const ClassifiedVolume& folder) {
    const auto id = folder.id();
    auto& picked = extras(side);
    const auto found = std::find_if(picked.begin(), picked.end(),
                                    [&](const auto& each) { return each.id() == id; });
    if (found == picked.end())
        return;
    const auto before = found->facts.identity;
    *found = folder;
    const auto& now = folder.facts.identity;
    if (!before || !now || before->isSame(*now))
        return;
    replacements_.insert(folder.lastingID());
    selection(side).ids.erase(id);
    // The next pass then finds it as something new.
    std::erase_if(side == VolumeSide::Card ? lists_.cards : lists_.destinations,
                  [&](const auto& listed) { return listed.id() == id; });
}

void VolumeBoard::applyCapacity(const std::string& id, std::int64_t total, std::int64_t free) {
    fillGaps(lists_.cards, id, total, free);
    fillGaps(lists_.destinations, id, total, free);
    raise(corrections_.extraCards, id, total, free);
    raise(corrections_.extraDestinations, id, total, free);
}

} // namespace slatewise
