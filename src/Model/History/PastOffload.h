#pragma once

#include "Offload/OffloadSettings.h"
#include "Platform/Clock.h"
#include "Volumes/VolumeRecords.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace slatewise {

class L10n;

class AppDatabase;

/// That a card was copied and proved before. A word to whoever looks at it, and never a hindrance.
struct PastOffload {
    /// The last time, and all disks that it went to, by name.
    Instant at{};
    std::vector<std::string> disks;
    /// Other files would be copied now: it holds something else, or other names are skipped.
    bool hasChanged = false;

    /// Looks for the card in the store: by its file system, and by the names, sizes and dates of
    /// what an offload would copy, which is `copyableBytes` together. Empty when it is not known,
    /// or the store or the card cannot be read. Blocks, any thread.
    static std::optional<PastOffload> find(const AppDatabase& database,
                                           const ClassifiedVolume& card, std::int64_t copyableBytes,
                                           const SkipNames& skipNames);

    std::string text(L10n l10n) const;

    friend bool operator==(const PastOffload&, const PastOffload&) = default;
};

} // namespace slatewise
