#pragma once

#include "Model/Volumes/VolumeBoard.h"
#include "Offload/OffloadSettings.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace slatewise {

/// One volume to be measured.
struct MeasuringEntry {
    /// What counts: all that is in use, or what an offload would copy.
    enum class What { UsedBytes, CopyableBytes };

    std::string id;
    std::filesystem::path mountPoint;
    What what = What::CopyableBytes;

    friend bool operator==(const MeasuringEntry&, const MeasuringEntry&) = default;
};

/// Volumes to be measured, each by itself and away from the GUI thread.
struct MeasuringJob {
    std::vector<MeasuringEntry> entries;
    SkipNames skipNames;
    /// Counts the jobs so far.
    int generation = 0;
};

struct Measurement {
    std::int64_t usedBytes = 0;
    /// Of the whole volume; 0 when unknown.
    std::int64_t totalBytes = 0;
    std::int64_t freeBytes = 0;
};

/// Walks a card; may take minutes. Any thread, never fails.
Measurement measure(const MeasuringEntry& entry, const SkipNames& skipNames);

/// How many bytes each listed volume holds, as far as it is known. Decides what is to be measured
/// and takes the results; the measuring itself is somebody else's.
class ContentSizes {
public:
    /// What is to be measured now: volumes that have no value and are not being measured, and those
    /// in `forceIDs`. Values of volumes that are not listed are dropped. Of two jobs that measure
    /// one volume the later one counts; whatever else the earlier one was to do stays its own.
    std::optional<MeasuringJob> begin(const VolumeLists& lists, const VolumeIDs& forceIDs,
                                      const SkipNames& skipNames);

    /// Whether the result of that job is still awaited for a volume.
    bool isWanted(int generation, std::string_view id) const;

    /// Takes a result that is wanted; says whether it was.
    bool accept(int generation, const std::string& id, std::int64_t usedBytes);

    std::optional<std::int64_t> usedBytes(std::string_view id) const;

    /// What was free at the last look, which is later than the machine's own word; says whether
    /// that is news.
    bool setFreeBytes(const std::string& id, std::int64_t freeBytes);
    std::optional<std::int64_t> freeBytes(std::string_view id) const;

    bool isMeasuring(std::string_view id) const { return measuring_.contains(id); }

    /// Volumes without a value count nothing.
    std::int64_t totalOf(std::span<const ClassifiedVolume> volumes) const;
    /// Whether the total of these is still to be awaited.
    bool isMeasuringAny(std::span<const ClassifiedVolume> volumes) const;

private:
    std::map<std::string, std::int64_t, std::less<>> usedBytes_;
    std::map<std::string, std::int64_t, std::less<>> freeBytes_;
    /// The job whose result each volume waits for.
    std::map<std::string, int, std::less<>> measuring_;
    int generation_ = 0;
};

} // namespace slatewise
