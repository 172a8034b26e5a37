#pragma once

#include "Platform/FileDescriptor.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Files/FolderIdentity.h"
#include "Platform/Files/OpenBeneath.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace slatewise {

/// A folder held open, and everything beneath it reached from there: whatever is mounted, unmounted
/// or put in its place under the same path later, this stays the folder that was opened.
///
/// Names are taken relative to it. None leads out of it or onto another volume that is mounted
/// beneath it, EXDEV: what comes to be mounted there in mid-run would take footage that was meant
/// for this one, or pass for a part of a card. No link on the way is followed but where a caller
/// asks for that. While it is held, its volume cannot be unmounted without force.
/// Everything blocks its caller and fails with `PosixError`, unless it says otherwise; any thread.
class RootFolder {
public:
    using Links = OpenBeneath::Links;

    explicit RootFolder(std::filesystem::path path);

    /// Of this folder. Empty, with the reason in `errno`, when it cannot be had.
    std::optional<FolderIdentity> identity() const noexcept {
        return FolderIdentity::of(descriptor_.get());
    }

    /// Takes hold of a folder beneath this one, which may go meanwhile.
    RootFolder below(const std::filesystem::path& relative) const;

    /// Whether both are one and the same folder. Never fails.
    bool isSame(const RootFolder& other) const noexcept;

    /// By which the folder was opened; for messages.
    const std::filesystem::path& path() const noexcept { return path_; }

    /// Whether its path leads to this very folder now, and, of one that was opened by its path, the
    /// drive holds the same medium still: a card that is exchanged in its reader leaves its mount
    /// behind. Never fails.
    bool isStillAtItsPath() const noexcept;

    /// Opens with the flags of `open`; "" or "." is the folder itself. New files are readable by
    /// all, less what the umask takes away.
    FileDescriptor open(const std::filesystem::path& relative, int flags,
                        Links links = Links::Refuse) const;

    /// Attributes of the item itself, of the target where links are followed.
    FileSystem::Attributes attributes(const std::filesystem::path& relative,
                                      Links links = Links::Refuse) const;

    /// The same as it is now, also where another machine may have changed it: a share remembers
    /// what items were like for a while.
    FileSystem::Attributes attributesNow(const std::filesystem::path& relative) const;

    /// The names of all that lies in it, sorted.
    std::vector<std::string> names() const;

    /// The whole content of a regular file. Anything else is a failure, EINVAL, and never waited
    /// for; so is a file that is longer, EFBIG.
    std::string read(const std::filesystem::path& relative, std::int64_t largestBytes) const;

    /// Makes an empty file to be written. What bears the name, be it a link or a FIFO, is removed
    /// and never waited for; a folder is a failure.
    FileDescriptor createAnew(const std::filesystem::path& relative) const;

    /// Writes such a file, as its text is made, and waits until it is on the disk.
    void write(const std::filesystem::path& relative, const FileSystem::TextSource& content) const;

    /// Writes a file under another name, waits until it is on the disk, and renames it: whoever
    /// opens `relative` sees the old content or the new one, never a part.
    void writeAtomically(const std::filesystem::path& relative, std::string_view content) const;
    void writeAtomically(const std::filesystem::path& relative,
                         const FileSystem::TextSource& content) const;

    /// Whether anything bears that name, a dangling link included; true also when that cannot be
    /// told, since it is not known to be free then.
    bool exists(const std::filesystem::path& relative) const;

    /// Makes a folder with all its parents. A folder that is there already is no failure.
    void createFolders(const std::filesystem::path& relative) const;

    /// Makes one folder whose parent exists. False when something bears that name already.
    bool createNewFolder(const std::filesystem::path& relative) const;

    /// Removes a file or a link, never a folder. Nothing of that name is no failure.
    void removeFile(const std::filesystem::path& relative) const;

    /// Removes a folder in which nothing lies any more.
    void removeFolder(const std::filesystem::path& relative) const;

    /// Renames within the folder, replacing a file that bears the new name. The change is on the
    /// disk when the folders are synced.
    void rename(const std::filesystem::path& from, const std::filesystem::path& to) const;

    /// The same to a name that nothing bears; what bears it stays, EEXIST.
    void renameToFree(const std::filesystem::path& from, const std::filesystem::path& to) const;

    /// Keeps others from locking this folder for as long as the result lives; the system takes the
    /// lock back when the process dies. Invalid when another holds it, or where there are no locks,
    /// with the reason in `errno`: EWOULDBLOCK for the former.
    FileDescriptor tryToLock() const;

    /// Of the volume that holds it; both 0 when that cannot be learnt. Never fails.
    FileSystem::Capacity capacity() const noexcept;

    /// Waits until its own entries are on the disk: what was made, renamed or removed in it.
    void sync() const;

    /// Waits until everything written to its volume would survive a power cut.
    void syncVolume() const;

private:
    RootFolder(std::filesystem::path path, FileDescriptor descriptor) noexcept
        : path_(std::move(path)), descriptor_(std::move(descriptor)) {}

    struct Parent {
        FileDescriptor folder;
        std::string name;
    };
    Parent parentOf(const std::filesystem::path& relative) const;
    /// EILSEQ where the file system does not allow the name, else the code.
    int whyNotMade(const std::filesystem::path& relative, int code) const noexcept;
    bool holdsSameMedium(dev_t device) const noexcept;

    std::filesystem::path path_;
    FileDescriptor descriptor_;
    /// 0 when unknown.
    std::uint64_t medium_ = 0;
};

/// A file by its name below a folder that is held open. Refers to the folder.
struct FileBeneath {
    const RootFolder& folder;
    std::filesystem::path relative;
    RootFolder::Links links = RootFolder::Links::Refuse;

    /// For messages.
    std::filesystem::path path() const { return folder.path() / relative; }
};

} // namespace slatewise
