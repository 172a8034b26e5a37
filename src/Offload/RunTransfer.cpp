#include "Offload/RunTransfer.h"

#include "Platform/Error.h"
#include "Platform/Text.h"

namespace slatewise {

TransferWatch RunTransfer::watch(const std::string& relative,
                                 std::function<void(std::size_t)> onBytes) {
    return {.onBytes = std::move(onBytes),
            .onAccess = [this](const auto& file, FileAccess access) { noteAccess(file, access); },
            .stop = stop_,
            .furtherFormats = furtherFormats(relative)};
}

void RunTransfer::throwIfCancelled() const {
    if (stop_.stop_requested())
        throw CancellationError();
}

/// One log line for each way that files of a volume went.
void RunTransfer::noteAccess(const FileBeneath& file, FileAccess access) {
    if (!accessesSeen_.insert({&file.folder, access}).second)
        return;
    reporter_.log(
        Text::displayable(file.folder.path().native()) +
        (access == FileAccess::Direct ? ": direct I/O" : ": cached I/O, dropped from the cache"));
}

} // namespace slatewise
