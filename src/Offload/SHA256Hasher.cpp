#include "Offload/SHA256Hasher.h"

#include "Offload/OffloadError.h"
#include "Platform/Text.h"

#include <memory>

namespace slatewise {

namespace SHA256Hasher {

namespace {

/// Hashes each chunk, and tells of it.
Transfer::Steps stepsOf(PassHasher& hasher, const TransferWatch& watch) {
    return {.hash = [&hasher](std::span<const std::byte> chunk) { hasher.update(chunk); },
            .tell =
                [&watch](std::size_t count) {
                    if (watch.onBytes)
                        watch.onBytes(count);
                }};
}

void tellAccess(const TransferWatch& watch, const FileBeneath& name, const UncachedFile& file) {
    if (watch.onAccess)
        watch.onAccess(name, file.access());
}

void tellOpened(const TransferWatch& watch, const UncachedFile& source) {
    if (watch.onOpened)
        watch.onOpened(source.atOpening());
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

FileDigests hashOpen(Transfer& transfer, const std::shared_ptr<UncachedFile>& file,
                     const FileBeneath& name, const TransferWatch& watch) {
    auto hasher = hasherFor(watch);
    transfer.read(file, stepsOf(hasher, watch), watch.stop);
    tellAccess(watch, name, *file);
    return finish(hasher);
}

} // namespace

FileDigests hashFile(Transfer& transfer, const FileBeneath& name, const TransferWatch& watch) {
    const auto file = transfer.open(name);
    tellOpened(watch, *file);
    std::int64_t bytes = 0;
    auto counting = watch;
    counting.onBytes = [&](std::size_t count) {
        bytes += static_cast<std::int64_t>(count);
        if (watch.onBytes)
            watch.onBytes(count);
    };
    auto digests = hashOpen(transfer, file, name, counting);
    // A driver may end a file before its time, and leave its size and its dates alone.
    if (const auto size = file->attributes().sizeBytes; size > bytes)
        throw OffloadError(OffloadError::EndedEarly{size, bytes});
    return digests;
}

CopyResult copyAndHash(Transfer& transfer, const FileBeneath& from, const FileBeneath& to,
                       const TransferWatch& watch, const std::optional<FileBeneath>& next) {
    auto hasher = hasherFor(watch);
    CopyResult result;
    const auto source = transfer.open(from);
    tellOpened(watch, *source);
    auto destination = UncachedFile::createForWriting(to);
    auto steps = stepsOf(hasher, watch);
    steps.tell = [&, tell = std::move(steps.tell)](std::size_t count) {
        result.bytes += static_cast<std::int64_t>(count);
        tell(count);
    };
    transfer.copy(source, destination, steps, watch.stop);
    if (next)
        transfer.prepare(*next);
    destination.sync();
    tellAccess(watch, from, *source);
    tellAccess(watch, to, destination);
    result.digests = finish(hasher);

    // A camera or a sync client may still be writing: what grew or shrank is no copy.
    const auto facts = source->attributes();
    if (facts.sizeBytes != result.bytes)
        throw OffloadError(OffloadError::SizeMismatch{facts.sizeBytes, result.bytes});
    if (facts.exactModified)
        destination.setModified(*facts.exactModified);
    return result;
}

} // namespace SHA256Hasher

namespace Verifier {

ReadBack readDestination(Transfer& transfer, const FileBeneath& name, const TransferWatch& watch) {
    const auto file = transfer.open(name);
    const bool isKept = file->isKeptInMemory();
    const auto attributes = file->atOpening();
    return {SHA256Hasher::hashOpen(transfer, file, name, watch), attributes, isKept};
}

bool matches(std::string_view sourceHash, std::string_view destHash) {
    return !sourceHash.empty() &&
           Text::asciiLowercased(sourceHash) == Text::asciiLowercased(destHash);
}

} // namespace Verifier

} // namespace slatewise
