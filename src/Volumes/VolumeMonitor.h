#pragma once

#include "Platform/Disks/DiskMemory.h"
#include "Platform/Disks/DiskSources.h"
#include "Platform/Disks/MountEvents.h"
#include "Volumes/PatientReader.h"
#include "Volumes/VolumeRecords.h"
#include "Volumes/VolumesRoot.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

namespace slatewise {

class DiskInfo;

/// Keeps a classified list of the volumes under the volumes root, and tells when it changes in a
/// way that matters. Made, started, stopped and destroyed on the GUI thread, before the application
/// object ends.
///
/// A thread of its own reads everything anew once a period, the first time at once, and also when
/// the kernel says that something was mounted or unmounted. It does one read after the other: what
/// falls due while one is under way is done once, right after it.
///
/// Nothing that hangs reaches the GUI thread, and nothing keeps the monitor from seeing a new card.
/// A volume that does not answer within 2 seconds delays that one read; from the next on it is
/// passed over, with what was last known of it, until it answers again. What the disk service has
/// said of a mount holds for as long as that mount lasts, also when the service falls silent, goes
/// or starts anew; of a new one the kernel is asked after 2 seconds without an answer.
class VolumeMonitor {
public:
    struct Options {
        DiskSources sources;
        MountEvents::Source events = MountEvents::Source::Kernel;
        /// From the beginning of a read to that of the next. A read asks every disk.
        std::chrono::milliseconds period = std::chrono::seconds(4);
    };

    explicit VolumeMonitor(VolumesRoot volumesRoot);
    VolumeMonitor(VolumesRoot volumesRoot, Options options);
    ~VolumeMonitor();
    VolumeMonitor(const VolumeMonitor&) = delete;
    VolumeMonitor& operator=(const VolumeMonitor&) = delete;

    /// Called on the GUI thread after a change. Set before `start`, once.
    std::function<void()> onChange;

    /// Does nothing when it was started already.
    void start();

    /// Waits for a read that is under way, which takes a few seconds at most. Calls of `onChange`
    /// that are on their way still come.
    void stop();

    /// One full read on the caller's thread, which it blocks: none for the GUI thread. When several
    /// threads do it, the last to begin wins.
    void refresh();

    /// By name. Any thread.
    std::vector<ClassifiedVolume> currentVolumes() const;

    /// Those of them that are destinations.
    std::vector<ClassifiedVolume> destinations() const;

private:
    void run(const std::stop_token& stop, MountEvents& events);
    std::shared_ptr<const DiskInfo>
    lookAtDisks(const std::vector<std::filesystem::path>& mountPoints);
    std::vector<ClassifiedVolume> read();
    /// Drops what was read before what is there already.
    void publish(std::vector<ClassifiedVolume> volumes, std::uint64_t number);
    void postChange();

    VolumesRoot volumesRoot_;
    Options options_;
    PatientReader reader_;
    DiskMemory memory_;
    /// Guards the list, held only to compare, swap or copy it.
    mutable std::mutex lock_;
    std::vector<ClassifiedVolume> volumes_;
    /// The read that the list is of; reads are numbered as they begin.
    std::uint64_t latest_ = 0;
    std::atomic<std::uint64_t> reads_ = 0;
    /// Leads calls that are on their way back to us, as long as there is anyone to lead to.
    std::shared_ptr<VolumeMonitor*> self_;
    std::jthread thread_;
};

} // namespace slatewise
