#include "Verify/ListedTree.h"

#include "MediaHashList/History.h"
#include "Offload/TreeWalker.h"
#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Files/RootFolder.h"
#include "Platform/Text.h"
#include "Reports/ManifestJSON.h"

#include <algorithm>

namespace slatewise::Verify {

namespace {

using MediaHashList::History;
using MediaHashList::kHistoryFolder;

constexpr std::string_view kManifest = "manifest.json";
constexpr std::string_view kChecksums = "checksums.sha256";
constexpr std::string_view kReports = "reports";
constexpr std::size_t kDigestLength = 64;

Error notUsable(const std::filesystem::path& list, const std::string& reason) {
    return Error(Text::displayable(list.native()) + ": " + reason);
}

void requireDown(const std::filesystem::path& list, const std::string& path) {
    if (!MediaHashList::leadsDown(path))
        throw notUsable(list, "a path leads out of its folder: " + Text::displayable(path));
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
    throw notUsable(recorded, "the session's folder is not there");
}

void addManifest(const SessionManifest& manifest, const std::filesystem::path& list,
                 ListedTree& tree) {
    tree.lists.push_back(list);
    for (const auto& file : manifest.files) {
        // A name that JSON cannot hold stands in the checksum list.
        if (file.action == RowAction::Skip || file.action == RowAction::Hash ||
            file.relativePath.find("\xef\xbf\xbd") != std::string::npos)
            continue;
        requireDown(list, file.relativePath);
        auto& expected = tree.files[file.relativePath];
        if (file.sourceSHA256)
            expected.sha256.insert(Text::asciiLowercased(*file.sourceSHA256));
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
    const auto text = MediaHashList::readList(list);
    for (auto line : Text::pieces(text, '\n')) {
        const bool isEscaped = line.starts_with('\\');
        line.remove_prefix(isEscaped ? 1 : 0);
        const auto digest = Text::asciiLowercased(line.substr(0, kDigestLength));
        if (line.size() < kDigestLength + 3 ||
            digest.find_first_not_of("0123456789abcdef") != std::string::npos ||
            line[kDigestLength] != ' ')
            throw notUsable(list, "not a list of SHA-256 checksums");
        const auto name = line.substr(kDigestLength + 2);
        const auto path = isEscaped ? unescaped(name) : std::string(name);
        requireDown(list, path);
        tree.files[path].sha256.insert(digest);
    }
}

void addHistory(const std::filesystem::path& root, const std::string& prefix, ListedTree& tree) {
    tree.lists.push_back(root / kHistoryFolder);
    const auto history = History::load(root);
    for (const auto& [path, values] : history.known()) {
        auto& all = tree.files[prefix + path].values;
        all.insert(all.end(), values.begin(), values.end());
    }
    for (const auto& generation : history.generations()) {
        for (const auto& pattern : generation.ignored)
            tree.ignoredNames.insert(pattern);
    }
}

/// Histories of the tree and of folders in it.
void addHistories(ListedTree& tree) {
    const auto chain = std::string(kHistoryFolder) + "/ascmhl_chain.xml";
    for (const auto& entry : TreeWalker::walk(RootFolder(tree.root), {})) {
        if (entry.isDirectory || !("/" + entry.relativePath).ends_with("/" + chain))
            continue;
        const auto prefix = entry.relativePath.substr(0, entry.relativePath.size() - chain.size());
        addHistory(tree.root / prefix, prefix, tree);
        if (!prefix.empty())
            tree.nestedHistories.push_back(prefix);
    }
}

void addReports(const std::filesystem::path& folder, ListedTree& tree) {
    if (FileSystem::exists(folder / kManifest)) {
        const auto manifest = ReportWriter::isoDecode(MediaHashList::readList(folder / kManifest));
        if (tree.root.empty())
            tree.root = treeOf(manifest, folder);
        addManifest(manifest, folder / kManifest, tree);
    }
    if (tree.root.empty())
        tree.root = folder;
    if (FileSystem::exists(folder / kChecksums))
        addChecksums(folder / kChecksums, tree);
}

bool isReportOf(const std::filesystem::path& reportFolder, const std::filesystem::path& disk,
                const std::filesystem::path& session) {
    try {
        const auto manifest =
            ReportWriter::isoDecode(MediaHashList::readList(reportFolder / kManifest));
        return manifest.destination.sessionRoot == session || disk / belowDisk(manifest) == session;
    } catch (const Error&) {
        // Somebody else's folder, or one that another session left half written.
        return false;
    }
}

/// Looks for the session's reports at the root of the disk, which any folder above may be.
void addReportsOfSession(ListedTree& tree) {
    for (auto disk = tree.root; disk != disk.parent_path(); disk = disk.parent_path()) {
        std::error_code none;
        for (const auto& item :
             std::filesystem::directory_iterator(disk.parent_path() / kReports, none)) {
            if (isReportOf(item.path(), disk.parent_path(), tree.root))
                addReports(item.path(), tree);
        }
    }
}

} // namespace

ListedTree findLists(const std::filesystem::path& given) {
    std::error_code failure;
    const auto path = std::filesystem::canonical(given, failure);
    if (failure)
        throw PosixError("open", given, failure.value());
    ListedTree tree;
    if (!isFolder(path)) {
        if (path.filename() != kManifest && path.filename() != kChecksums)
            throw notUsable(path, "not a list that this program knows");
        addReports(path.parent_path(), tree);
    } else if (FileSystem::exists(path / kManifest) || FileSystem::exists(path / kChecksums)) {
        addReports(path, tree);
    } else {
        tree.root = path;
        addReportsOfSession(tree);
    }
    addHistories(tree);
    if (tree.lists.empty())
        throw notUsable(path, "no list of checksums belongs to this folder");
    return tree;
}

} // namespace slatewise::Verify
