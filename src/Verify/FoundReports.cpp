#include "Verify/FoundReports.h"

#include "MediaHashList/Generation.h"
#include "Offload/ReportNames.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Files/RootFolder.h"
#include "Platform/Text.h"
#include "Reports/ReportWriter.h"
#include "Verify/Footage.h"
#include "Verify/SessionFolder.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <optional>
#include <utility>

namespace slatewise::Verify {

namespace {

using ItemType = FileSystem::ItemType;

/// Empty when nothing is there. Fails with `PosixError` where that cannot be told: what cannot be
/// looked at may be there.
std::optional<ItemType> typeOf(const std::filesystem::path& path) {
    try {
        return FileSystem::attributes(path).type;
    } catch (const PosixError& failure) {
        if (failure.code() != ENOENT && failure.code() != ENOTDIR)
            throw;
        return std::nullopt;
    }
}

/// Whether a set without a readable manifest may be the session's: most are named after the card,
/// and their checksums are of files that are there.
bool mayBeOf(const std::filesystem::path& session, const std::filesystem::path& set) {
    const auto card = Text::replaced(session.filename().native(), " ", "_");
    if (set.filename().native().find(card) != std::string::npos)
        return true;
    try {
        const auto names = namesIn(set / ReportNames::checksums);
        return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
            return MediaHashList::leadsDown(name) && FileSystem::exists(session / name);
        });
    } catch (const Error&) {
        return false;
    }
}

/// Where a set says that its session's copy is: where that was made, and on the disk of the set.
struct SaidPlace {
    std::filesystem::path made;
    std::filesystem::path onDisk;
};

SaidPlace placeAsListed(const SessionManifest& manifest, const std::filesystem::path& disk) {
    const std::filesystem::path made = manifest.destination.sessionRoot;
    const auto below = belowDisk(manifest);
    return {made, below.empty() ? made : disk / below};
}

/// The same in the form that names have there now.
SaidPlace placeAsItLies(const SessionManifest& manifest, const std::filesystem::path& disk) {
    const auto made = asItLies(manifest.destination.sessionRoot);
    const auto below = belowDisk(manifest);
    return {made, below.empty() ? made : disk / asItLies(disk, below)};
}

/// Where in the tree the copy of a session lies that has its reports on this disk; nothing when it
/// lies elsewhere.
std::optional<std::string> placeIn(const std::filesystem::path& root,
                                   const SessionManifest& manifest, const SaidPlace& said) {
    if (said.made == root || said.onDisk == root)
        return "";
    const auto inside = said.onDisk.lexically_relative(root).native();
    if (!MediaHashList::leadsDown(inside))
        return std::nullopt;
    // A copy that failed and was deleted is none that anybody could miss.
    if (manifest.status == OutcomeStatus::Failed && !FileSystem::exists(said.onDisk))
        return std::nullopt;
    return inside + "/";
}

constexpr std::string_view kNoUTF8 = "\xef\xbf\xbd";

/// The name of a session as its set has it. Where the manifest cannot hold it, the set's own name
/// does, which begins with a date.
std::string nameOf(const ReportSet& set, const SaidPlace& listed,
                   const std::filesystem::path& root) {
    constexpr std::size_t kDate = std::string_view("2026-03-14-091502-").size();
    auto name = listed.onDisk.lexically_relative(root).native();
    const auto folder = set.folder.filename().native();
    if (name.find(kNoUTF8) != std::string::npos && folder.size() > kDate)
        name += "/" + folder.substr(kDate);
    return name;
}

/// Whether a set is named after a folder on the way to `place` whose name its manifest cannot hold.
bool isNamedAfter(const std::filesystem::path& place, const ReportSet& set) {
    const auto name = set.folder.filename().native();
    return std::any_of(place.begin(), place.end(), [&](const std::filesystem::path& part) {
        return Text::displayable(part.native()) != part.native() &&
               name.find(Text::replaced(part.native(), " ", "_")) != std::string::npos;
    });
}

/// Any file of a set shows that there was one, whatever it has lost. Fails as `typeOf` does.
bool isSet(const std::filesystem::path& folder) {
    const auto& names = ReportWriter::fileNames;
    return typeOf(folder) == ItemType::Folder &&
           std::any_of(names.begin(), names.end(),
                       [&](std::string_view name) { return typeOf(folder / name).has_value(); });
}

bool isLink(const std::filesystem::path& path) {
    std::error_code failure;
    return std::filesystem::is_symlink(path, failure);
}

/// Whether a link stands where a set was that nobody finds otherwise, or may have. One that leads
/// to a set beside it is another name of that.
bool isLinkInPlaceOfSet(const std::filesystem::path& path) {
    if (!isLink(path))
        return false;
    std::error_code failure;
    const auto target = std::filesystem::canonical(path, failure);
    if (failure)
        return true;
    const bool isFoundAnyway =
        target.parent_path() == path.parent_path() && !target.filename().native().starts_with('.');
    return !isFoundAnyway && isSet(target);
}

/// Whether the folder came into being while this run went on, by the clock of that day. Manifests
/// keep whole seconds, and a disk may keep two.
bool isMadeBy(const SessionManifest& manifest, std::optional<Instant> created) {
    constexpr std::chrono::seconds kSlack{2};
    return created && *created >= manifest.startedAt - kSlack &&
           *created <= manifest.finishedAt + kSlack;
}

/// The folder of reports on the disk that a set's session lies on; empty when nobody knows which
/// that is.
std::filesystem::path reportsOf(const ReportSet& set, const std::filesystem::path& root) {
    const auto below = belowDisk(*set.manifest);
    if (below.empty())
        return {};
    auto disk = (root / set.prefix).parent_path();
    for (auto parts = std::distance(below.begin(), below.end()); parts > 0; --parts)
        disk = disk.parent_path();
    return disk / ReportNames::folder;
}

class Search {
public:
    Search(ListedTree& tree, const SessionManifest* own) : tree_(tree), own_(own) {}

    FoundReports run() {
        std::filesystem::path below;
        for (auto disk = tree_.root; disk != below; disk = disk.parent_path()) {
            below = disk;
            const auto folder = disk / ReportNames::folder;
            try {
                seekIn(disk, folder);
            } catch (const Error&) {
                found_.damaged.push_back({folder, folder, std::current_exception()});
            }
        }
        tellApart();
        choose();
        for (const auto& [place, set] : found_.newest) {
            if (set.manifest->startedAt < latest_[place])
                found_.withLaterDates.insert(place);
        }
        return std::move(found_);
    }

private:
    struct Candidate {
        ReportSet set;
        /// At whose root the set lies.
        std::filesystem::path disk;
    };

    /// Whether a folder of reports is to be looked through. Fails where something else stands in
    /// the place of one. No run writes through a link: reports behind one were moved.
    bool isFolderOfReports(const std::filesystem::path& folder) const {
        const auto type = typeOf(folder);
        if (isLink(folder)) {
            const auto isOurs = [&](const std::string& name) {
                return isSet(folder / name);
            };
            const bool isOthers = type == ItemType::Folder &&
                                  std::ranges::none_of(RootFolder(folder).names(), isOurs);
            if (!isOthers)
                throw PosixError("open", folder, ELOOP);
            return false;
        }
        // In the tree itself it is a file like others.
        if (type && type != ItemType::Folder && folder.parent_path() != tree_.root)
            throw PosixError("open", folder, ENOTDIR);
        return type == ItemType::Folder;
    }

    void seekIn(const std::filesystem::path& disk, const std::filesystem::path& folder) {
        if (!isFolderOfReports(folder))
            return;
        for (const auto& name : RootFolder(folder).names()) {
            const auto set = folder / name;
            // One that is in work lies under a name with a dot, and is none yet.
            if (set == tree_.root || name.starts_with('.'))
                continue;
            const auto list = set / ReportNames::manifest;
            try {
                if (isLinkInPlaceOfSet(set))
                    throw PosixError("open", set, ELOOP);
                if (isLink(set) || !isSet(set))
                    continue;
                auto manifest = readManifest(list);
                tree_.sets.insert(set);
                take(set, std::move(manifest), disk);
            } catch (const Error&) {
                auto& unread = mayBeOf(tree_.root, set) ? found_.damaged : found_.unknown;
                unread.push_back({list, folder, std::current_exception()});
            }
        }
    }

    void take(const std::filesystem::path& folder, SessionManifest manifest,
              const std::filesystem::path& disk) {
        if (isOfHashesOnly(manifest))
            return;
        const auto place = placeIn(tree_.root, manifest, placeAsItLies(manifest, disk));
        if (place)
            sets_[*place].push_back({{folder, std::move(manifest)}, disk});
    }

    /// Where sessions of two names would be one folder, one of them is gone, and the other is only
    /// named almost so: neither is taken for the other, if it is known whose the folder is.
    void tellApart() {
        for (auto& [place, candidates] : std::exchange(sets_, {})) {
            const auto listed = [](const Candidate& each) {
                return placeAsListed(*each.set.manifest, each.disk);
            };
            std::set<std::string> names;
            for (const auto& each : candidates)
                names.insert(nameOf(each.set, listed(each), tree_.root));
            const auto isOwner = [&, &place = place](const Candidate& each) {
                return isNamedAfter(tree_.root / place, each.set) ||
                       placeIn(tree_.root, *each.set.manifest, listed(each)) == place;
            };
            const bool isKnown =
                names.size() > 1 && std::any_of(candidates.begin(), candidates.end(), isOwner);
            for (auto& each : candidates) {
                auto own = std::optional(place);
                if (isKnown && !isOwner(each))
                    own = placeIn(tree_.root, *each.set.manifest, listed(each));
                if (own)
                    sets_[*own].push_back(std::move(each));
            }
        }
    }

    void choose() {
        const auto atRoot = sets_.extract("");
        if (atRoot)
            chooseFrom("", atRoot.mapped());
        const auto own = found_.newest.find("");
        Footage footage(own_ || own == found_.newest.end() ? own_ : &*own->second.manifest,
                        tree_.root);
        for (auto& [place, candidates] : sets_) {
            std::erase_if(candidates, [&](const Candidate& each) {
                return footage.has(each.set.folder / ReportNames::manifest);
            });
            chooseFrom(place, candidates);
        }
        const auto isFootage = [&](const UnreadReports& each) {
            const auto set = each.path.parent_path();
            return each.isOfSet() &&
                   std::ranges::any_of(ReportWriter::fileNames, [&](std::string_view name) {
                       return footage.has(set / name);
                   });
        };
        std::erase_if(found_.damaged, isFootage);
        std::erase_if(found_.unknown, isFootage);
    }

    void chooseFrom(const std::string& place, std::vector<Candidate>& candidates) {
        for (auto& [set, disk] : candidates) {
            const auto startedAt = set.manifest->startedAt;
            auto& latest = latest_.try_emplace(place, startedAt).first->second;
            latest = std::max(latest, startedAt);
            auto& newest = found_.newest[place];
            if (newest.manifest && !isTruer(*set.manifest, *newest.manifest, tree_.root / place))
                continue;
            newest = std::move(set);
            newest.prefix = place;
        }
    }

    ListedTree& tree_;
    const SessionManifest* const own_;
    FoundReports found_;
    /// By the place of their sessions.
    std::map<std::string, std::vector<Candidate>> sets_;
    /// By place, the latest date on which a copy there was begun.
    std::map<std::string, Instant> latest_;
};

} // namespace

bool isOfHashesOnly(const SessionManifest& manifest) {
    return manifest.wasHashing() || manifest.status == OutcomeStatus::Hashed ||
           std::any_of(manifest.files.begin(), manifest.files.end(),
                       [](const auto& file) { return file.action == RowAction::Hash; });
}

bool isTruer(const SessionManifest& left, const SessionManifest& right,
             const std::filesystem::path& session) {
    const auto attributes = FileSystem::attributesIfAny(session);
    const auto created = attributes ? attributes->created : std::nullopt;
    const auto rank = [&](const SessionManifest& manifest) {
        return std::pair(isMadeBy(manifest, created), manifest.startedAt);
    };
    return rank(left) >= rank(right);
}

FoundReports reportsAbove(ListedTree& tree, const SessionManifest* own) {
    return Search(tree, own).run();
}

void noteUnread(const std::vector<UnreadReports>& unread, ListedTree& tree) {
    for (const auto& each : unread) {
        const std::vector<std::string> paths = {each.path.native()};
        const bool isNoted =
            std::any_of(tree.notes.begin(), tree.notes.end(),
                        [&](const Note& note) { return note.failure && note.paths == paths; });
        if (!isNoted)
            tree.notes.push_back({Note::Kind::OtherReportsNotRead, paths, 1, each.failure});
    }
}

void tellUnread(const std::vector<UnreadReports>& unread, const ReportSet* known,
                ListedTree& tree) {
    const auto holder =
        known && known->manifest ? reportsOf(*known, tree.root) : std::filesystem::path();
    for (const auto& each : unread) {
        if (!holder.empty() && each.holder != holder)
            noteUnread({each}, tree);
        else
            readOrTell(tree, each.path, [&] { std::rethrow_exception(each.failure); });
    }
}

std::vector<ReportSet> addFound(FoundReports&& found, ListedTree& tree) {
    if (!found.newest.contains("")) {
        for (const auto& damaged : found.damaged) {
            if (damaged.isOfSet())
                addReports({damaged.path.parent_path()}, tree);
        }
    }
    std::vector<ReportSet> sets;
    for (auto& [place, set] : found.newest) {
        if (found.withLaterDates.contains(place))
            tree.notes.push_back({Note::Kind::LaterReportsPassedOver,
                                  {(set.folder / ReportNames::manifest).native()}});
        addReports(set, tree);
        sets.push_back(std::move(set));
    }
    return sets;
}

} // namespace slatewise::Verify
