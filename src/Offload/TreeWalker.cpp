#include "Offload/TreeWalker.h"

#include "Platform/Error.h"
#include "Platform/Files/FileDescriptor.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <numeric>

namespace slatewise::TreeWalker {

namespace {

using FileSystem::Attributes;
using FileSystem::ItemType;

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

/// Opens a folder by its path below another one, however long that path is. Invalid, with `errno`
/// set, when it cannot be opened.
FileDescriptor openBelow(int base, std::string_view relative) {
    constexpr int kFolder = O_DIRECTORY | O_CLOEXEC;
    FileDescriptor way;
    const auto from = [&] {
        return way ? way.get() : base;
    };
    while (relative.size() >= PATH_MAX) {
        const auto end = relative.rfind('/', PATH_MAX - 1);
        way = FileDescriptor(
            ::openat(from(), std::string(relative.substr(0, end)).c_str(), O_PATH | kFolder));
        if (!way)
            return way;
        relative.remove_prefix(end + 1);
    }
    const std::string rest(relative.empty() ? "." : relative);
    return FileDescriptor(::openat(from(), rest.c_str(), O_RDONLY | O_NOFOLLOW | kFolder));
}

/// Gives nothing, with `errno` set, when there is no such folder to list.
OpenFolder listable(FileDescriptor descriptor) {
    OpenFolder folder(descriptor ? ::fdopendir(descriptor.get()) : nullptr);
    if (folder)
        (void)descriptor.release();
    return folder;
}

/// Whether the failure says something of us and not of the folder. Going on would silently leave
/// out what could be read.
bool isOurOwnLimit(int code) {
    return code == EMFILE || code == ENFILE || code == ENOMEM;
}

bool isDotEntry(const char* name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

class Walk {
public:
    Walk(const std::filesystem::path& root, const SkipNames& names,
         const UnreadableFolder& onUnreadable)
        : root_(root), names_(names), onUnreadable_(onUnreadable) {}

    std::vector<InventoryEntry> run() {
        const FileDescriptor root(::open(root_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!root)
            passOver("", errno);
        else
            pending_.emplace_back();
        while (!pending_.empty()) {
            const auto relative = std::move(pending_.back());
            pending_.pop_back();
            if (const auto folder = listable(openBelow(root.get(), relative)))
                list(folder.get(), relative);
            else
                passOver(relative, errno);
        }
        std::sort(entries_.begin(), entries_.end(), [](const auto& left, const auto& right) {
            return left.relativePath < right.relativePath;
        });
        return std::move(entries_);
    }

private:
    void list(DIR* folder, const std::string& relative) {
        const auto prefix = relative.empty() ? "" : relative + "/";
        for (;;) {
            errno = 0;
            const dirent* const item = ::readdir(folder);
            if (!item) {
                if (errno != 0)
                    passOver(relative, errno);
                return;
            }
            if (!isDotEntry(item->d_name))
                visit(::dirfd(folder), item->d_name, prefix + item->d_name);
        }
    }

    void visit(int parent, const char* name, const std::string& relative) {
        auto attributes = FileSystem::attributesIn(parent, name);
        if (!attributes)
            throw PosixError("stat", root_ / relative, errno);
        const bool skip = shouldSkip(relative, name, names_);
        const bool isFolder = attributes->type == ItemType::Folder;
        const bool hasBytes = attributes->type == ItemType::SymbolicLink
                                  ? follow(root_ / relative, *attributes)
                                  : !isFolder;
        entries_.push_back({relative, isFolder, isFolder ? 0 : attributes->sizeBytes,
                            attributes->modified, attributes->created, hasBytes && !skip});
        if (isFolder && !skip)
            pending_.push_back(relative);
    }

    /// Replaces a link's attributes by those of the file it leads to. Gives whether it has bytes to
    /// copy; when that cannot be told it has, so that the copy fails and says why.
    static bool follow(const std::filesystem::path& link, Attributes& attributes) {
        attributes.sizeBytes = 0;
        try {
            const auto target = FileSystem::attributes(link);
            if (target.type == ItemType::Folder)
                return false;
            if (target.type == ItemType::RegularFile)
                attributes = target;
            return true;
        } catch (const PosixError& failure) {
            return failure.code() != ENOENT && failure.code() != ELOOP;
        }
    }

    void passOver(const std::string& relative, int code) {
        const auto folder = relative.empty() ? root_ : root_ / relative;
        if (isOurOwnLimit(code))
            throw PosixError("open", folder, code);
        if (onUnreadable_)
            onUnreadable_(folder, code);
    }

    const std::filesystem::path& root_;
    const SkipNames& names_;
    const UnreadableFolder& onUnreadable_;
    /// Folders to list, by their relative path. None is open but the one at hand: a tree may be
    /// deeper than a process may have files open.
    std::vector<std::string> pending_;
    std::vector<InventoryEntry> entries_;
};

} // namespace

const SkipNames& defaultSkipNames() {
    static const SkipNames names = {".Spotlight-V100", ".fseventsd", ".Trashes", ".DS_Store",
                                    "System Volume Information"};
    return names;
}

std::vector<InventoryEntry> walk(const std::filesystem::path& root, const SkipNames& skipNames,
                                 std::span<const std::string> extraExcludes,
                                 const UnreadableFolder& onUnreadable) {
    SkipNames names = skipNames;
    names.insert(extraExcludes.begin(), extraExcludes.end());
    return Walk(root, names, onUnreadable).run();
}

bool shouldSkip(std::string_view relative, std::string_view name, const SkipNames& skipNames) {
    constexpr std::string_view kAppleDoublePrefix = "._";
    if (name.starts_with(kAppleDoublePrefix) || skipNames.contains(name))
        return true;
    while (!relative.empty()) {
        const auto end = std::min(relative.find('/'), relative.size());
        if (end > 0 && skipNames.contains(relative.substr(0, end)))
            return true;
        relative.remove_prefix(std::min(end + 1, relative.size()));
    }
    return false;
}

std::optional<std::string> normalizeSkipName(std::string_view raw) {
    std::string name = Text::replaced(Text::trimmed(raw), "\\", "/");
    name.erase(name.find_last_not_of('/') + 1);
    if (const auto slash = name.rfind('/'); slash != std::string::npos)
        name.erase(0, slash + 1);
    if (name.empty() || name == "." || name == "..")
        return std::nullopt;
    return name;
}

std::int64_t copyableBytes(const std::filesystem::path& folder, const SkipNames& skipNames,
                           std::span<const std::string> extraExcludes) {
    try {
        const auto entries = walk(folder, skipNames, extraExcludes);
        return std::accumulate(entries.begin(), entries.end(), std::int64_t{0},
                               [](std::int64_t sum, const InventoryEntry& entry) {
                                   return entry.shouldCopy ? sum + entry.sizeBytes : sum;
                               });
    } catch (const Error&) {
        return 0;
    }
}

std::string relativePath(const std::filesystem::path& item, const std::filesystem::path& base) {
    const auto standardized = [](const std::filesystem::path& path) {
        std::string text = path.lexically_normal().native();
        while (text.size() > 1 && text.ends_with('/'))
            text.pop_back();
        return text;
    };
    const std::string itemPath = standardized(item);
    std::string prefix = standardized(base);
    if (itemPath == prefix)
        return "";
    if (!prefix.ends_with('/'))
        prefix += '/';
    if (itemPath.starts_with(prefix))
        return itemPath.substr(prefix.size());
    return itemPath.substr(itemPath.rfind('/') + 1);
}

} // namespace slatewise::TreeWalker
