#include "Platform/Files/OpenBeneath.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <string_view>
#include <vector>

namespace slatewise::OpenBeneath {

namespace {

constexpr mode_t kReadableByAll = 0644;

/// Invalid, with the reason in `errno`, when it cannot be opened.
FileDescriptor openByKernel(int base, const std::string& name, int flags, Links links) noexcept {
    open_how how{};
    how.flags = static_cast<__u64>(flags | O_CLOEXEC);
    how.mode = (flags & O_CREAT) != 0 ? kReadableByAll : 0;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS | RESOLVE_NO_XDEV;
    if (links == Links::Refuse)
        how.resolve |= RESOLVE_NO_SYMLINKS;
    // The kernel gives up when folders are moved about while it looks.
    constexpr int kTries = 100;
    long descriptor = -1;
    for (int attempt = 0; attempt < kTries; ++attempt) {
        descriptor = ::syscall(SYS_openat2, base, name.c_str(), &how, sizeof how);
        if (descriptor >= 0 || errno != EAGAIN)
            break;
    }
    return FileDescriptor(static_cast<int>(descriptor));
}

/// Whether no other volume is mounted between the two. A device is no measure where its kernel
/// tells mounts apart: a Btrfs subvolume has one of its own.
bool isOnMountOf(int base, const FileDescriptor& item) noexcept {
    struct statx outer {};
    struct statx inner {};
    constexpr unsigned kWanted = STATX_INO | STATX_MNT_ID;
    if (::statx(base, "", AT_EMPTY_PATH, kWanted, &outer) != 0 ||
        ::statx(item.get(), "", AT_EMPTY_PATH, kWanted, &inner) != 0)
        return false;
    if ((outer.stx_mask & inner.stx_mask & STATX_MNT_ID) != 0)
        return outer.stx_mnt_id == inner.stx_mnt_id;
    return outer.stx_dev_major == inner.stx_dev_major && outer.stx_dev_minor == inner.stx_dev_minor;
}

/// In the order in which they are taken from the end.
void pushParts(std::string_view path, std::vector<std::string>& parts) {
    while (!path.empty()) {
        const auto slash = path.rfind('/');
        const auto part = path.substr(slash == std::string_view::npos ? 0 : slash + 1);
        if (!part.empty() && part != ".")
            parts.emplace_back(part);
        path = path.substr(0, slash == std::string_view::npos ? 0 : slash);
    }
}

/// Empty when it cannot be learnt.
std::string targetOf(int folder, const char* link) {
    std::array<char, PATH_MAX> target{};
    const auto length = ::readlinkat(folder, link, target.data(), target.size());
    return length > 0 ? std::string(target.data(), static_cast<std::size_t>(length)) : "";
}

bool isLink(const FileDescriptor& item) noexcept {
    struct stat facts {};
    return item && ::fstat(item.get(), &facts) == 0 && S_ISLNK(facts.st_mode);
}

/// As `openByKernel`, for kernels and sandboxes that do not know its call, and for links that the
/// kernel holds back for how they are written. One may leave the folder if it comes back by the
/// names of the folder's own path; nothing outside is looked at.
class StepByStep {
public:
    StepByStep(int base, Links links) : base_(base), links_(links) {}

    FileDescriptor open(std::string_view name, int flags) {
        if (!enter(name))
            return FileDescriptor();
        while (!parts_.empty()) {
            const auto part = take();
            if (part == "..") {
                if (!leave())
                    return FileDescriptor();
                continue;
            }
            const bool isLast = parts_.empty();
            auto item = openHere(part, O_PATH);
            const bool isLinkMeant = isLast && (flags & O_NOFOLLOW) != 0;
            if (isLink(item) && !isLinkMeant) {
                if (!follow(item))
                    return FileDescriptor();
                continue;
            }
            if (isLast)
                return openHere(part, flags);
            if (!item)
                return item;
            // Nothing leads back then, and a tree may be deeper than files may be open.
            if (links_ == Links::Refuse)
                way_.clear();
            way_.push_back(std::move(item));
        }
        return openHere(".", flags);
    }

private:
    static bool fail(int code) noexcept {
        errno = code;
        return false;
    }

    std::string take() {
        auto part = std::move(parts_.back());
        parts_.pop_back();
        return part;
    }

    FileDescriptor openHere(const std::string& name, int flags) const noexcept {
        FileDescriptor item(::openat(way_.empty() ? base_ : way_.back().get(), name.c_str(),
                                     flags | O_NOFOLLOW | O_CLOEXEC, kReadableByAll));
        if (!item || isOnMountOf(base_, item))
            return item;
        errno = EXDEV;
        return FileDescriptor();
    }

    bool enter(std::string_view path) {
        pushParts(path, parts_);
        return !path.starts_with('/') || comeBack(Outside::Top);
    }

    bool follow(const FileDescriptor& link) {
        // As many as the kernel follows.
        constexpr int kMostLinks = 40;
        if (links_ == Links::Refuse || ++linksFollowed_ > kMostLinks)
            return fail(ELOOP);
        const auto target = targetOf(link.get(), "");
        return target.empty() ? fail(ENOENT) : enter(target);
    }

    bool leave() {
        if (links_ == Links::Refuse)
            return fail(EXDEV);
        if (way_.empty())
            return comeBack(Outside::Parent);
        way_.pop_back();
        return true;
    }

    enum class Outside { Top, Parent };

    bool comeBack(Outside from) {
        const auto path = targetOf(AT_FDCWD, ("/proc/self/fd/" + std::to_string(base_)).c_str());
        if (links_ == Links::Refuse || !path.starts_with('/'))
            return fail(EXDEV);
        std::vector<std::string> home;
        pushParts(path, home);
        way_.clear();
        // What of the path is still to be gone through.
        auto left = from == Outside::Top ? home.size() : std::min<std::size_t>(home.size(), 1);
        while (left > 0) {
            if (parts_.empty())
                return fail(EXDEV);
            const auto part = take();
            if (part == "..")
                left = std::min(left + 1, home.size());
            else if (part == home[left - 1])
                --left;
            else
                return fail(EXDEV);
        }
        return true;
    }

    const int base_;
    const Links links_;
    /// Names still to be gone through, the next one last.
    std::vector<std::string> parts_;
    /// The folders gone through beneath the base.
    std::vector<FileDescriptor> way_;
    int linksFollowed_ = 0;
};

} // namespace

FileDescriptor open(int base, const std::string& name, int flags, Links links) {
    auto opened = openByKernel(base, name, flags, links);
    // What a sandbox forbids and what a file forbids look alike; the other way tells them apart.
    const bool isUnknown = errno == ENOSYS || errno == EPERM;
    const bool mayComeBack = errno == EXDEV && links == Links::FollowBeneath;
    if (opened || (!isUnknown && !mayComeBack))
        return opened;
    return StepByStep(base, links).open(name, flags);
}

} // namespace slatewise::OpenBeneath
