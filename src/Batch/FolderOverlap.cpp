#include "Batch/FolderOverlap.h"

#include "Language/L10n.h"
#include "Offload/FolderTemplate.h"
#include "Offload/ReportNames.h"
#include "Platform/Disks/MountTable.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/NameForms.h"
#include "Platform/Text.h"
#include "Storage/SupportPaths.h"

#include <algorithm>
#include <array>

namespace slatewise::FolderOverlap {

namespace {

/// Where a folder lies, whatever path led to it.
struct Place {
    /// 0 when nothing is known but the path.
    dev_t device = 0;
    /// Within the device's file system.
    std::filesystem::path path;
};

/// Whether the folder knows it by other names, too. To list it would cost all that lies there.
bool answersToOthers(const std::filesystem::path& folder, const std::string& name) {
    // Of other letters nobody knows all that may be taken for the same.
    if (NameForms::mayHaveForms(name))
        return true;
    auto upper = name;
    for (char& letter : upper)
        letter = letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    const std::array<std::string, 2> others = {std::move(upper), Text::asciiLowercased(name)};
    return std::any_of(others.begin(), others.end(), [&](const std::string& other) {
        return other != name && FileSystem::exists(folder / other);
    });
}

/// The name by which its folder lists it, where it may be called by others: some file systems take
/// letters of either case for the same, and Unicode forms.
std::filesystem::path asListed(const std::filesystem::path& folder,
                               const std::filesystem::path& name) {
    if (!FileSystem::exists(folder / name) || !answersToOthers(folder, name.native()))
        return name;
    const auto form = [](const std::filesystem::path& any) {
        return Text::caseFolded(Text::composed(any.native()));
    };
    std::vector<std::filesystem::path> alike;
    for (const auto& item : FileSystem::entriesIfAny(folder)) {
        if (item.filename() == name)
            return name;
        if (form(item.filename()) == form(name))
            alike.push_back(item.filename());
    }
    return alike.size() == 1 ? alike.front() : name;
}

/// Without links, and as everything is listed, as far as the path exists.
std::filesystem::path resolved(const std::filesystem::path& path) {
    std::error_code failure;
    const auto canonical = std::filesystem::weakly_canonical(path, failure);
    std::filesystem::path way;
    for (const auto& part : failure ? path.lexically_normal() : canonical)
        way /= way.empty() || part.empty() ? part : asListed(way, part);
    return way;
}

bool isBelow(const std::filesystem::path& outer, const std::filesystem::path& inner) {
    const auto [end, ignored] =
        std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end());
    // A slash at the end of a path is an empty last part.
    return std::all_of(end, outer.end(), [](const auto& part) { return part.empty(); });
}

Place placeOf(const std::vector<Mount>& mounts, const std::filesystem::path& path) {
    const auto* mount = MountTable::holding(mounts, path);
    if (!mount)
        return {0, path};
    return {mount->device,
            (std::filesystem::path(mount->root) / path.lexically_relative(mount->mountPoint))
                .lexically_normal()};
}

/// A second copy on one disk saves nobody: with the disk both are lost. Two folders of a disk are a
/// person's own choice; one folder by two names is not.
std::optional<std::string> findSameDestination(const BatchPlan& plan) {
    const auto& all = plan.destinations;
    for (auto one = all.begin(); one != all.end(); ++one) {
        const auto& path = one->facts.mountPoint;
        const auto same = std::find_if(std::next(one), all.end(), [&](const auto& other) {
            return contains(path, other.facts.mountPoint) && contains(other.facts.mountPoint, path);
        });
        if (same != all.end())
            return plan.l10n().sameDestination(Text::displayable(path.native()),
                                               Text::displayable(same->facts.mountPoint.native()));
    }
    return std::nullopt;
}

} // namespace

bool contains(const std::filesystem::path& outer, const std::filesystem::path& inner) {
    const auto outerPath = resolved(outer);
    const auto innerPath = resolved(inner);
    if (isBelow(outerPath, innerPath))
        return true;
    const auto mounts = MountTable::read();
    const auto outerPlace = placeOf(mounts, outerPath);
    const auto innerPlace = placeOf(mounts, innerPath);
    return outerPlace.device == innerPlace.device && isBelow(outerPlace.path, innerPlace.path);
}

std::optional<std::string> find(const BatchPlan& plan, Instant now) {
    if (auto same = findSameDestination(plan))
        return same;
    const auto archive = SupportPaths::reportsArchivePath(plan.settings);
    for (const auto& pair : plan.pairs()) {
        const auto& card = pair.card.facts.mountPoint;
        const auto& destination = pair.destination.facts.mountPoint;
        const auto cardName = Text::displayable(pair.card.name());
        const auto destinationName = Text::displayable(pair.destination.name());
        // A link may have taken the place of the folder that the reports go to.
        if (contains(card, destination) || contains(card, destination / ReportNames::folder))
            return plan.l10n().destinationInsideCard(destinationName, cardName);
        if (contains(card, archive))
            return plan.l10n().archiveInsideCard(Text::displayable(archive.native()), cardName);
        // Who only hashes may well hash an earlier session where it lies.
        if (plan.settings.verifyOnly)
            continue;
        const auto session = FolderTemplate::sessionRoot(
            plan.settings, {destination, pair.card.name(), pair.camera, pair.ekip, "", now});
        if (contains(card, session))
            return plan.l10n().destinationInsideCard(destinationName, cardName);
        if (contains(session, card))
            return plan.l10n().cardInsideSession(cardName, Text::displayable(session.native()));
    }
    return std::nullopt;
}

} // namespace slatewise::FolderOverlap
