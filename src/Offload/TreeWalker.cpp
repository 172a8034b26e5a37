#include "Offload/TreeWalker.h"

#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>

namespace slatewise::TreeWalker {

namespace {

using FileSystem::Attributes;
using FileSystem::ItemType;

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

OpenFolder openFolder(const RootFolder& root, const std::string& relative) {
    auto descriptor = root.open(relative, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    OpenFolder folder(::fdopendir(descriptor.get()));
    if (!folder)
        throw PosixError("open", root.path() / relative, errno);
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

/// Hands over everything under a root, in no particular order.
class Walk {
public:
    using Each = std::function<void(InventoryEntry)>;

    Walk(const RootFolder& root, const SkipNames& names, const WalkObserver& observer, Each each)
        : root_(root), names_(names), observer_(observer), each_(std::move(each)) {}

    void run() {
        list(openFolder(root_, "").get(), "");
        while (!pending_.empty()) {
            const auto relative = std::move(pending_.back());
            pending_.pop_back();
            if (const auto folder = openOrPassOver(relative))
                list(folder.get(), relative);
        }
    }

private:
    OpenFolder openOrPassOver(const std::string& relative) {
        try {
            return openFolder(root_, relative);
        } catch (const PosixError& failure) {
            passOver(relative, failure.code());
            return nullptr;
        }
    }

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

    void visit(int parent, const char* name, std::string relative) {
        if (observer_.stop.stop_requested())
            throw CancellationError();
        auto attributes = FileSystem::attributesIn(parent, name);
        if (!attributes)
            return passOver(relative, errno);
        // No folder on the way is left out: the walk would not have come here.
        const bool skip = shouldSkip(name, name, names_);
        const bool isFolder = attributes->type == ItemType::Folder;
        const bool hasBytes =
            attributes->type == ItemType::SymbolicLink ? follow(relative, *attributes) : !isFolder;
        if (isFolder && !skip)
            pending_.push_back(relative);
        each_({std::move(relative), isFolder, isFolder ? 0 : attributes->sizeBytes,
               attributes->modified, attributes->created, hasBytes && !skip,
               changesOf(*attributes)});
    }

    /// Replaces a link's attributes by those of the file it leads to. Gives whether it has bytes to
    /// copy; when that cannot be told it has, so that the copy fails and says why.
    bool follow(const std::string& link, Attributes& attributes) {
        attributes.sizeBytes = 0;
        try {
            const auto target = root_.attributes(link, RootFolder::Links::FollowBeneath);
            if (target.type != ItemType::RegularFile) {
                if (observer_.leadsToNoFile)
                    observer_.leadsToNoFile(link);
                return false;
            }
            attributes = target;
            return true;
        } catch (const PosixError& failure) {
            if (failure.code() == EXDEV && observer_.leadsOut)
                observer_.leadsOut(link);
            constexpr std::array kNowhere = {ENOENT, ELOOP, ENOTDIR, ENAMETOOLONG};
            const bool isNowhere =
                std::find(kNowhere.begin(), kNowhere.end(), failure.code()) != kNowhere.end();
            if (isNowhere && observer_.leadsNowhere)
                observer_.leadsNowhere(link);
            return !isNowhere && failure.code() != EXDEV;
        }
    }

    void passOver(const std::string& relative, int code) {
        if (isOurOwnLimit(code))
            throw PosixError("open", root_.path() / relative, code);
        if (observer_.unreadable)
            observer_.unreadable(relative, code);
    }

    const RootFolder& root_;
    const SkipNames& names_;
    const WalkObserver& observer_;
    const Each each_;
    /// Folders to list, by their relative path. None is open but the one at hand: a tree may be
    /// deeper than a process may have files open.
    std::vector<std::string> pending_;
};

SkipNames united(const SkipNames& names, std::span<const std::string> further) {
    SkipNames all = names;
    all.insert(further.begin(), further.end());
    return all;
}

} // namespace

const SkipNames& defaultSkipNames() {
    static const SkipNames names = {".Spotlight-V100", ".fseventsd", ".Trashes", ".DS_Store",
                                    "System Volume Information"};
    return names;
}

std::vector<InventoryEntry> walk(const RootFolder& root, const SkipNames& skipNames,
                                 std::span<const std::string> extraExcludes,
                                 const WalkObserver& observer) {
    const auto names = united(skipNames, extraExcludes);
    std::vector<InventoryEntry> entries;
    Walk(root, names, observer, [&](InventoryEntry entry) {
        entries.push_back(std::move(entry));
    }).run();
    std::sort(entries.begin(), entries.end(), [](const auto& left, const auto& right) {
        return left.relativePath < right.relativePath;
    });
    return entries;
}

std::array<std::int64_t, 4> changesOf(const Attributes& attributes) {
    const auto modified = attributes.exactModified.value_or(timespec{});
    const auto changed = attributes.changed.value_or(timespec{});
    return {modified.tv_sec, modified.tv_nsec, changed.tv_sec, changed.tv_nsec};
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

bool isRepairFolder(const RootFolder& root, const std::string& relative) {
    if (relative != "lost+found")
        return false;
    struct stat owner {};
    struct statfs volume {};
    try {
        const auto folder = root.open(relative, O_PATH | O_DIRECTORY);
        // The number is that of ext2, ext3 and ext4 alike.
        return ::fstat(folder.get(), &owner) == 0 && owner.st_uid == 0 &&
               ::fstatfs(folder.get(), &volume) == 0 && volume.f_type == EXT4_SUPER_MAGIC;
    } catch (const PosixError&) {
        return false;
    }
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
        const auto names = united(skipNames, extraExcludes);
        std::int64_t sum = 0;
        Walk(RootFolder(folder), names, {}, [&](const InventoryEntry& entry) {
            sum += entry.shouldCopy ? entry.sizeBytes : 0;
        }).run();
        return sum;
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
