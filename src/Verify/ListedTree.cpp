#include "Verify/ListedTree.h"

#include "MediaHashList/HashedTree.h"
#include "MediaHashList/History.h"
#include "MediaHashList/ListError.h"
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
using MediaHashList::ListError;
using Reason = MediaHashList::ListError::Reason;

constexpr std::string_view kManifest = "manifest.json";
constexpr std::string_view kChecksums = "checksums.sha256";
constexpr std::string_view kReports = "reports";
constexpr std::size_t kDigestLength = 64;

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
    const auto history = History::load(root, folder);
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
void addHistories(ListedTree& tree) {
    const RootFolder root(tree.root);
    tree.withHistory = MediaHashList::foldersWithHistory(TreeWalker::walk(root, {}));
    for (const auto& folder : tree.withHistory)
        addHistory(root, folder, tree);
}

void addReports(const std::filesystem::path& folder, ListedTree& tree) {
    if (FileSystem::exists(folder / kManifest)) {
        const auto manifest = readManifest(folder / kManifest);
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
        const auto manifest = readManifest(reportFolder / kManifest);
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
            throw ListError(Reason::UnknownFile, {}, path);
        addReports(path.parent_path(), tree);
    } else if (FileSystem::exists(path / kManifest) || FileSystem::exists(path / kChecksums)) {
        addReports(path, tree);
    } else {
        tree.root = path;
        addReportsOfSession(tree);
    }
    addHistories(tree);
    if (tree.lists.empty())
        throw ListError(Reason::NoList, {}, path);
    return tree;
}

} // namespace slatewise::Verify
