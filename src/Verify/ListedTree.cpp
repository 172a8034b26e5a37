#include "Verify/ListedTree.h"

#include "MediaHashList/HashedTree.h"
#include "MediaHashList/History.h"
#include "Offload/TreeWalker.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Files/RootFolder.h"
#include "Platform/Text.h"
#include "Reports/ManifestJSON.h"

#include <algorithm>
#include <set>

namespace slatewise::Verify {

namespace {

using MediaHashList::History;
using MediaHashList::ListError;
using Reason = MediaHashList::ListError::Reason;

constexpr std::string_view kManifest = "manifest.json";
constexpr std::string_view kChecksums = "checksums.sha256";
constexpr std::string_view kReports = "reports";
constexpr std::size_t kDigestLength = 64;

void tell(ListedTree& tree, const std::filesystem::path& list, const Error& failure) {
    ListTrouble trouble{ListTrouble::Kind::Damaged, list};
    if (const auto* const words = dynamic_cast<const ListError*>(&failure))
        trouble.failure = words->in({});
    else
        trouble.reason = describe(failure);
    tree.troubles.push_back(std::move(trouble));
}

void throwIfAsked(const std::stop_token& stop) {
    if (stop.stop_requested())
        throw CancellationError();
}

void requireDown(const std::filesystem::path& list, const std::string& path) {
    if (!MediaHashList::leadsDown(path))
        throw ListError(Reason::LeadsOut, path, list);
}

std::string readList(const std::filesystem::path& list) {
    return MediaHashList::readList(RootFolder(list.parent_path()), list.filename());
}

SessionManifest readManifest(const std::filesystem::path& list) {
    const auto text = readList(list);
    try {
        return ReportWriter::isoDecode(text);
    } catch (const Error& failure) {
        throw ListError(Reason::NotAList, failure.what(), list);
    }
}

/// Reads a list, and tells it when that cannot be done.
template <typename Read>
void readOrTell(ListedTree& tree, const std::filesystem::path& list, Read&& read) {
    try {
        read();
    } catch (const Error& failure) {
        tell(tree, list, failure);
    }
}

bool isFolder(const std::filesystem::path& path) {
    const auto attributes = FileSystem::attributesIfAny(path);
    return attributes && attributes->type == FileSystem::ItemType::Folder;
}

/// Where a session lies below its disk, wherever that is mounted today.
std::filesystem::path belowDisk(const SessionManifest& manifest) {
    return TreeWalker::relativePath(manifest.destination.sessionRoot,
                                    manifest.destination.mountPoint);
}

std::filesystem::path treeOf(const SessionManifest& manifest,
                             const std::filesystem::path& reportFolder) {
    const auto parent = reportFolder.parent_path();
    if (parent.filename() == kReports) {
        const auto relative = belowDisk(manifest).native();
        const auto beside = parent.parent_path() / relative;
        if (MediaHashList::leadsDown(relative) && isFolder(beside))
            return std::filesystem::canonical(beside);
    }
    const std::filesystem::path recorded = manifest.destination.sessionRoot;
    if (recorded.is_absolute() && isFolder(recorded))
        return std::filesystem::canonical(recorded);
    throw ListError(Reason::NoFolder, {}, recorded);
}

void expect(Expected& expected, HashFormat format, std::string_view value) {
    const HashValue wanted{format, format == HashFormat::C4 ? std::string(value)
                                                            : Text::asciiLowercased(value)};
    if (std::find(expected.begin(), expected.end(), wanted) == expected.end())
        expected.push_back(wanted);
}

/// A name that JSON cannot hold stands in the checksum list, and here as it would be shown.
std::set<std::string> namesAsShown(const ListedTree& tree) {
    std::set<std::string> names;
    for (const auto& [path, expected] : tree.files) {
        if (auto shown = Text::displayable(path); shown != path)
            names.insert(std::move(shown));
    }
    return names;
}

void addManifest(const SessionManifest& manifest, const std::filesystem::path& list,
                 ListedTree& tree) {
    tree.lists.push_back(list);
    if (manifest.status == OutcomeStatus::Failed)
        tree.troubles.push_back({ListTrouble::Kind::OfFailedRun, list});
    const auto otherwiseNamed = namesAsShown(tree);
    for (const auto& file : manifest.files) {
        if (file.action == RowAction::Skip || file.action == RowAction::Hash ||
            otherwiseNamed.contains(file.relativePath))
            continue;
        requireDown(list, file.relativePath);
        auto& expected = tree.files[file.relativePath];
        if (file.sourceSHA256)
            expect(expected, HashFormat::SHA256, *file.sourceSHA256);
    }
}

/// The name in a line that begins with a backslash, as checking tools write odd ones.
std::string unescaped(std::string_view name) {
    std::string text;
    for (std::size_t at = 0; at < name.size(); ++at) {
        if (name[at] != '\\' || at + 1 == name.size()) {
            text += name[at];
            continue;
        }
        const char next = name[++at];
        text += next == 'n' ? '\n' : next == 'r' ? '\r' : next;
    }
    return text;
}

void addChecksums(const std::filesystem::path& list, ListedTree& tree) {
    tree.lists.push_back(list);
    const auto text = readList(list);
    for (auto line : Text::pieces(text, '\n')) {
        const bool isEscaped = line.starts_with('\\');
        line.remove_prefix(isEscaped ? 1 : 0);
        const auto digest = Text::asciiLowercased(line.substr(0, kDigestLength));
        if (line.size() < kDigestLength + 3 || !isValue(HashFormat::SHA256, digest) ||
            line[kDigestLength] != ' ')
            throw ListError(Reason::NotAList, std::string(line), list);
        const auto name = line.substr(kDigestLength + 2);
        const auto path = isEscaped ? unescaped(name) : std::string(name);
        requireDown(list, path);
        expect(tree.files[path], HashFormat::SHA256, digest);
    }
}

void addHistory(const RootFolder& root, const std::string& folder, ListedTree& tree) {
    const auto prefix = folder.empty() ? "" : folder + "/";
    const auto lists = prefix + std::string(MediaHashList::kHistoryFolder);
    tree.lists.push_back(tree.root / lists);
    const auto history = History::loadReadable(
        root, folder, [&](const auto& list, const Error& failure) { tell(tree, list, failure); });
    for (const auto& list : history.brokenReferences())
        tell(tree, tree.root / list, ListError(Reason::NotAsReferred));
    for (const auto& [path, values] : history.known()) {
        auto& expected = tree.files[prefix + path];
        for (const auto& value : values)
            expect(expected, value.format, value.value);
    }
    auto& ignored = tree.ignored[folder];
    for (const auto& generation : history.generations())
        ignored.insert(ignored.end(), generation.ignored.begin(), generation.ignored.end());
    std::sort(ignored.begin(), ignored.end());
    ignored.erase(std::unique(ignored.begin(), ignored.end()), ignored.end());
    // It grows with each generation, whatever a list of the day before says of it. Reading it has
    // shown that it holds together.
    tree.files.erase(lists + "/" + std::string(MediaHashList::kChainName));
}

/// Histories of the tree and of folders in it.
void addHistories(ListedTree& tree, const std::stop_token& stop) {
    tree.folder = std::make_shared<const RootFolder>(tree.root);
    tree.withHistory = MediaHashList::foldersWithHistory(TreeWalker::walk(*tree.folder, {}));
    for (const auto& folder : tree.withHistory) {
        throwIfAsked(stop);
        addHistory(*tree.folder, folder, tree);
    }
}

void addReports(const std::filesystem::path& folder, ListedTree& tree) {
    const auto list = folder / kManifest;
    std::optional<SessionManifest> manifest;
    if (FileSystem::exists(list)) {
        // Only the manifest knows where the tree is.
        if (tree.root.empty()) {
            manifest = readManifest(list);
            tree.root = treeOf(*manifest, folder);
        } else {
            readOrTell(tree, list, [&] { manifest = readManifest(list); });
        }
    }
    if (tree.root.empty())
        tree.root = folder;
    if (FileSystem::exists(folder / kChecksums))
        readOrTell(tree, folder / kChecksums, [&] { addChecksums(folder / kChecksums, tree); });
    if (manifest)
        readOrTell(tree, list, [&] { addManifest(*manifest, list, tree); });
}

/// Whether a set without a readable manifest may be the session's: most are named after the card,
/// and their checksums are of files that are there.
bool mayBeOf(const std::filesystem::path& session, const std::filesystem::path& set) {
    const auto card = Text::replaced(session.filename().native(), " ", "_");
    if (set.filename().native().find(card) != std::string::npos)
        return true;
    try {
        const auto text = readList(set / kChecksums);
        const auto lines = Text::pieces(text, '\n');
        return std::any_of(lines.begin(), lines.end(), [&](std::string_view line) {
            const auto name = line.substr(std::min(line.size(), kDigestLength + 2));
            return MediaHashList::leadsDown(name) && FileSystem::exists(session / name);
        });
    } catch (const Error&) {
        return false;
    }
}

/// The sets of a session in one folder of reports.
struct SessionReports {
    /// A folder that was deleted and written again has several, of which only the newest is true.
    std::filesystem::path newest;
    Instant startedAt{};
    std::vector<std::filesystem::path> damaged;
};

void seekReports(const std::filesystem::path& disk, ListedTree& tree, SessionReports& found) {
    if (!isFolder(disk / kReports))
        return;
    for (const auto& name : RootFolder(disk / kReports).names()) {
        const auto set = disk / kReports / name;
        const auto list = set / kManifest;
        if (set == tree.root || !isFolder(set) || !FileSystem::exists(list))
            continue;
        try {
            const auto manifest = readManifest(list);
            if ((manifest.destination.sessionRoot == tree.root ||
                 disk / belowDisk(manifest) == tree.root) &&
                (found.newest.empty() || manifest.startedAt >= found.startedAt)) {
                found.newest = set;
                found.startedAt = manifest.startedAt;
            }
        } catch (const Error& failure) {
            if (!mayBeOf(tree.root, set))
                continue;
            tell(tree, list, failure);
            found.damaged.push_back(set);
        }
    }
}

/// Looks for the session's reports at the root of the disk, which any folder above may be.
void addReportsOfSession(ListedTree& tree) {
    SessionReports found;
    for (auto disk = tree.root; disk != disk.parent_path();) {
        disk = disk.parent_path();
        readOrTell(tree, disk / kReports, [&] { seekReports(disk, tree, found); });
    }
    if (!found.newest.empty())
        return addReports(found.newest, tree);
    for (const auto& set : found.damaged) {
        const auto list = set / kChecksums;
        if (FileSystem::exists(list))
            readOrTell(tree, list, [&] { addChecksums(list, tree); });
    }
}

/// A card may bring files that are only named as ours are.
bool isSetOfReports(const std::filesystem::path& folder) {
    try {
        (void)readManifest(folder / kManifest);
        return true;
    } catch (const Error&) {
        return false;
    }
}

void addListsOfFolder(const std::filesystem::path& folder, ListedTree& tree) {
    tree.root = folder;
    addReportsOfSession(tree);
    const bool isNamedAsReports =
        FileSystem::exists(folder / kManifest) || FileSystem::exists(folder / kChecksums);
    if (!isNamedAsReports || !tree.lists.empty() || !tree.troubles.empty())
        return;
    if (isFolder(folder / MediaHashList::kHistoryFolder) && !isSetOfReports(folder))
        return;
    tree.root.clear();
    addReports(folder, tree);
}

} // namespace

ListedTree findLists(const std::filesystem::path& given, const std::stop_token& stop) {
    std::error_code failure;
    const auto path = std::filesystem::canonical(given, failure);
    if (failure)
        throw PosixError("open", given, failure.value());
    ListedTree tree;
    if (!isFolder(path)) {
        if (path.filename() != kManifest && path.filename() != kChecksums)
            throw ListError(Reason::UnknownFile, {}, path);
        addReports(path.parent_path(), tree);
    } else {
        addListsOfFolder(path, tree);
    }
    throwIfAsked(stop);
    addHistories(tree, stop);
    throwIfAsked(stop);
    if (tree.lists.empty() && tree.troubles.empty())
        throw ListError(Reason::NoList, {}, path);
    if (tree.files.empty() && tree.troubles.empty())
        throw ListError(Reason::NothingToCompare, {}, path);
    return tree;
}

} // namespace slatewise::Verify
