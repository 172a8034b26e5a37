#pragma once

#include "Platform/FileDescriptor.h"
#include "Platform/Files/RootFolder.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>

namespace slatewise {

/// Zero-filled memory that may be handed to a device without being copied. Page-aligned.
class TransferBuffer {
public:
    /// Where a transfer may begin within it.
    static constexpr std::size_t alignment = 4096;

    /// What is large lies in one piece also for the device, if the system has such a piece: it
    /// moves a megabyte in half the time then. Memory that is never touched costs nothing.
    explicit TransferBuffer(std::size_t size);
    ~TransferBuffer();
    TransferBuffer(const TransferBuffer&) = delete;
    TransferBuffer& operator=(const TransferBuffer&) = delete;

    std::span<std::byte> bytes() noexcept { return bytes_; }

private:
    /// More than is handed out, to begin where a large page begins.
    std::span<std::byte> mapped_;
    std::span<std::byte> bytes_;
};

/// How the bytes of a file travelled.
enum class FileAccess {
    /// Between the device and our memory, past the system's cache.
    Direct,
    /// Through the cache, which was emptied of this file before reading and after writing.
    CacheDropped,
};

/// One regular file, read or written front to back past the system's cache, so that what is read is
/// what the device holds and not what memory remembers.
///
/// Where a file system refuses direct transfers, at opening or at the first transfer, the file goes
/// through the cache and is dropped from it: before the first read, and after a sync. An unaligned
/// tail is written that way too, since a device only takes whole blocks. Whoever uses the class
/// sees none of this, save in `access()`.
///
/// Failures are `PosixError`s, but for what is no file at all, which is an `Error`. No operation is
/// retried when a signal interrupts it. Not shared between threads.
class UncachedFile {
public:
    /// Opens for reading. A FIFO, a socket or a device is refused at once and never waited for.
    static UncachedFile openForReading(const FileBeneath& file);

    /// Creates a new, empty file for writing. Anything that bears its name stays as it is and is a
    /// failure, EEXIST; so is a name that the file system takes for another one's.
    static UncachedFile createForWriting(const FileBeneath& file);

    /// Reads on. Gives the number of bytes, less than asked for only near the end, 0 at the end.
    /// `into` should be aligned memory of a `TransferBuffer`.
    std::size_t read(std::span<std::byte> into);

    /// Writes all of the bytes, which should be aligned memory of a `TransferBuffer`.
    void write(std::span<const std::byte> from);

    /// Waits until the content is on the device.
    void sync();

    /// Whether some of the file stays in the system's memory although it was dropped from there, as
    /// when another program has it mapped, there is no device beneath, or the file is so small that
    /// the file system keeps it among its own records. What is read then may come from there. To be
    /// asked before the first read.
    bool isKeptInMemory() const noexcept;

    /// As it was when the file was opened for reading.
    const FileSystem::Attributes& atOpening() const noexcept { return atOpening_; }
    std::int64_t sizeAtOpening() const noexcept { return atOpening_.sizeBytes; }

    /// Attributes of the open file itself, whatever bears its name by now.
    FileSystem::Attributes attributes() const;

    /// Sets the modification date and nothing else.
    void setModified(timespec moment);

    FileAccess access() const noexcept { return access_; }

private:
    UncachedFile(FileDescriptor descriptor, std::filesystem::path path, FileAccess access);

    void writeAll(std::span<const std::byte> from);
    void leaveDirectAccess();
    void dropFromCache() const noexcept;

    FileDescriptor descriptor_;
    std::filesystem::path path_;
    FileAccess access_;
    bool isDirect_;
    FileSystem::Attributes atOpening_;
};

} // namespace slatewise
