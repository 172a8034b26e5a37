#include "Offload/SHA256Hasher.h"

#include "Offload/OffloadError.h"
#include "Platform/Text.h"

#include <algorithm>
#include <optional>

namespace slatewise {

namespace SHA256Hasher {

namespace {

void throwIfCancelled(const std::stop_token& stop) {
    if (stop.stop_requested())
        throw CancellationError();
}

/// This thread's buffer, kept from one file to the next: for a small file, fresh memory costs more
/// than reading it.
TransferBuffer& threadBuffer(std::size_t size) {
    thread_local std::optional<TransferBuffer> buffer;
    if (!buffer || buffer->bytes().size() != size)
        buffer.emplace(size);
    return *buffer;
}

/// Hands the file to `each` chunk by chunk. `each` must not transfer another file.
template <typename Each>
void readUncached(UncachedFile& file, std::size_t size, const std::stop_token& stop, Each&& each) {
    auto& buffer = threadBuffer(std::max(size, smallestBufferSize));
    throwIfCancelled(stop);
    while (const auto count = file.read(buffer.bytes())) {
        each(std::span<const std::byte>(buffer.bytes().first(count)));
        throwIfCancelled(stop);
    }
}

void tellBytes(const TransferWatch& watch, std::size_t count) {
    if (watch.onBytes)
        watch.onBytes(count);
}

void tellAccess(const TransferWatch& watch, const FileBeneath& name, const UncachedFile& file) {
    if (watch.onAccess)
        watch.onAccess(name, file.access());
}

/// All values of a pass, the SHA-256 first.
PassHasher hasherFor(const TransferWatch& watch) {
    std::vector<HashFormat> formats = {HashFormat::SHA256};
    formats.insert(formats.end(), watch.furtherFormats.begin(), watch.furtherFormats.end());
    return PassHasher(formats);
}

FileDigests finish(PassHasher& hasher) {
    auto values = hasher.finish();
    FileDigests digests{std::move(values.front().text), {}};
    values.erase(values.begin());
    digests.further = std::move(values);
    return digests;
}

FileDigests hashOpen(UncachedFile& file, const FileBeneath& name, std::size_t size,
                     const TransferWatch& watch) {
    auto hasher = hasherFor(watch);
    readUncached(file, size, watch.stop, [&](std::span<const std::byte> chunk) {
        hasher.update(chunk);
        tellBytes(watch, chunk.size());
    });
    tellAccess(watch, name, file);
    return finish(hasher);
}

} // namespace

FileDigests hashFile(const FileBeneath& name, std::size_t size, const TransferWatch& watch) {
    auto file = UncachedFile::openForReading(name);
    return hashOpen(file, name, size, watch);
}

CopyResult copyAndHash(const FileBeneath& from, const FileBeneath& to, std::size_t size,
                       const TransferWatch& watch) {
    to.folder.createFolders(to.relative.parent_path());
    auto hasher = hasherFor(watch);
    CopyResult result;
    auto source = UncachedFile::openForReading(from);
    auto destination = UncachedFile::createForWriting(to);
    readUncached(source, size, watch.stop, [&](std::span<const std::byte> chunk) {
        hasher.update(chunk);
        destination.write(chunk);
        result.bytes += static_cast<std::int64_t>(chunk.size());
        tellBytes(watch, chunk.size());
    });
    destination.sync();
    tellAccess(watch, from, source);
    tellAccess(watch, to, destination);
    result.digests = finish(hasher);

    // A camera or a sync client may still be writing: what grew or shrank is no copy.
    const auto facts = source.attributes();
    if (facts.sizeBytes != result.bytes)
        throw OffloadError(OffloadError::SizeMismatch{facts.sizeBytes, result.bytes});
    if (facts.exactModified)
        destination.setModified(*facts.exactModified);
    return result;
}

} // namespace SHA256Hasher

namespace Verifier {

ReadBack readDestination(const FileBeneath& name, const TransferWatch& watch) {
    auto file = UncachedFile::openForReading(name);
    const bool isKept = file.isKeptInMemory();
    return {SHA256Hasher::hashOpen(file, name, SHA256Hasher::bufferSize, watch), isKept};
}

bool matches(std::string_view sourceHash, std::string_view destHash) {
    return !sourceHash.empty() &&
           Text::asciiLowercased(sourceHash) == Text::asciiLowercased(destHash);
}

} // namespace Verifier

} // namespace slatewise
