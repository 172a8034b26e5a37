#include "Volumes/VolumeMonitor.h"

#include "Platform/Disks/DiskInfo.h"
#include "Platform/Text.h"
#include "Volumes/DiskUtilClient.h"
#include "Volumes/VolumeClassifier.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <iterator>

namespace slatewise {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{2};

/// Whether the application would show both in the same way. Free space changes all the time.
bool looksTheSame(const ClassifiedVolume& left, const ClassifiedVolume& right) {
    return left.id() == right.id() && left.lastingID() == right.lastingID() &&
           left.kind == right.kind && left.name() == right.name() &&
           left.facts.writeObstacle == right.facts.writeObstacle &&
           left.facts.mountPoint == right.facts.mountPoint;
}

bool comesBefore(const ClassifiedVolume& left, const ClassifiedVolume& right) {
    return Text::localizedCaseInsensitiveCompare(left.name(), right.name()) < 0;
}

/// A device that is mounted at several places is one volume, the one that comes first.
void keepOneOfEach(std::vector<ClassifiedVolume>& volumes) {
    VolumeIDs kept;
    std::erase_if(volumes, [&](const auto& volume) { return !kept.insert(volume.id()).second; });
}

/// Where the kernel's table has a folder of the volumes root, which may be reached through links.
std::filesystem::path withoutLinks(const std::filesystem::path& mountPoint) {
    std::error_code failure;
    const auto parent = std::filesystem::canonical(mountPoint.parent_path(), failure);
    return failure ? mountPoint : parent / mountPoint.filename();
}

/// Facts of a folder in a volumes root. One on which nothing is mounted has a name and no more: it
/// must not pass for the disk that it happens to lie on.
VolumeFacts factsOf(const DiskInfo& disks, const std::filesystem::path& mountPoint) {
    const auto* mount = disks.mountAt(withoutLinks(mountPoint));
    auto facts =
        DiskUtilClient::factsFrom(mountPoint, mount, mount ? disks.facts(*mount) : std::nullopt);
    DiskUtilClient::lookInto(facts);
    return facts;
}

/// Facts of one that does not answer and never has.
VolumeFacts factsOfSilent(const DiskInfo& disks, const std::filesystem::path& mountPoint) {
    const auto* mount = disks.mountAt(withoutLinks(mountPoint));
    auto facts = DiskUtilClient::factsFrom(
        mountPoint, mount, mount ? disks.factsWithoutReading(*mount) : std::nullopt);
    facts.writeObstacle = WriteObstacle::NoAnswer;
    return facts;
}

PatientReader::Subject subject(const DiskInfo& disks, const std::filesystem::path& mountPoint) {
    const auto* mount = disks.mountAt(withoutLinks(mountPoint));
    return {mount ? disks.identity(*mount) : mountPoint.native(), mountPoint};
}

/// Of the mounts under the roots those that the service may have something to say of yet.
std::vector<const Mount*> awaited(const DiskInfo& disks,
                                  const std::vector<std::filesystem::path>& mountPoints) {
    std::vector<const Mount*> mounts;
    for (const auto& mountPoint : mountPoints) {
        const auto* mount = disks.mountAt(withoutLinks(mountPoint));
        if (mount && disks.isAwaited(*mount))
            mounts.push_back(mount);
    }
    return mounts;
}

} // namespace

VolumeMonitor::VolumeMonitor(VolumesRoot volumesRoot) : VolumeMonitor(std::move(volumesRoot), {}) {}

VolumeMonitor::VolumeMonitor(VolumesRoot volumesRoot, Options options)
    : volumesRoot_(std::move(volumesRoot)), options_(std::move(options)), reader_(kPatience),
      self_(std::make_shared<VolumeMonitor*>(this)) {}

VolumeMonitor::~VolumeMonitor() {
    stop();
}

void VolumeMonitor::start() {
    if (thread_.joinable())
        return;
    // Listening before the first read, so that no change slips in between.
    thread_ = std::jthread([this, events = MountEvents(options_.events)](
                               const std::stop_token& stop) mutable { run(stop, events); });
}

void VolumeMonitor::stop() {
    // Its destructor stops the thread and waits for it.
    std::jthread ending(std::move(thread_));
}

void VolumeMonitor::refresh() {
    const auto number = ++reads_;
    publish(read(), number);
}

std::vector<ClassifiedVolume> VolumeMonitor::currentVolumes() const {
    const std::lock_guard guard(lock_);
    return volumes_;
}

std::vector<ClassifiedVolume> VolumeMonitor::destinations() const {
    auto volumes = currentVolumes();
    std::erase_if(volumes, [](const ClassifiedVolume& volume) {
        return volume.kind != VolumeKind::Destination;
    });
    return volumes;
}

void VolumeMonitor::run(const std::stop_token& stop, MountEvents& events) {
    const std::stop_callback wakeUp(stop, [&events] { events.wakeUp(); });
    auto tick = SteadyClock::now();
    while (!stop.stop_requested()) {
        refresh();
        // Ticks that a slow read has missed are not made up for.
        while (tick <= SteadyClock::now())
            tick += options_.period;
        events.waitUntil(tick);
    }
}

/// Looks again while the service owes an answer about a volume, until our patience with it is over.
std::shared_ptr<const DiskInfo>
VolumeMonitor::lookAtDisks(const std::vector<std::filesystem::path>& mountPoints) {
    constexpr std::chrono::milliseconds kBetweenLooks{50};
    const auto deadline = SteadyClock::now() + kPatience;
    while (true) {
        const auto disks = std::make_shared<DiskInfo>(options_.sources, memory_);
        const auto mounts = awaited(*disks, mountPoints);
        if (mounts.empty())
            return disks;
        if (SteadyClock::now() >= deadline) {
            for (const auto* mount : mounts)
                disks->giveUp(*mount, memory_);
            return disks;
        }
        std::this_thread::sleep_for(kBetweenLooks);
    }
}

std::vector<ClassifiedVolume> VolumeMonitor::read() {
    const auto mountPoints = DiskUtilClient::listMounts(volumesRoot_);
    if (mountPoints.empty())
        return {};
    const auto disks = lookAtDisks(mountPoints);
    std::vector<PatientReader::Subject> subjects;
    subjects.reserve(mountPoints.size());
    for (const auto& mountPoint : mountPoints)
        subjects.push_back(subject(*disks, mountPoint));
    const auto facts =
        reader_.read(subjects, [disks](const auto& path) { return factsOf(*disks, path); });

    std::vector<ClassifiedVolume> volumes;
    for (std::size_t index = 0; index < facts.size(); ++index) {
        volumes.push_back(VolumeClassifier::classify(
            facts[index] ? *facts[index] : factsOfSilent(*disks, mountPoints[index])));
    }
    std::stable_sort(volumes.begin(), volumes.end(), comesBefore);
    keepOneOfEach(volumes);
    return volumes;
}

void VolumeMonitor::publish(std::vector<ClassifiedVolume> volumes, std::uint64_t number) {
    {
        const std::lock_guard guard(lock_);
        if (number < latest_)
            return;
        latest_ = number;
        if (std::equal(volumes.begin(), volumes.end(), volumes_.begin(), volumes_.end(),
                       looksTheSame))
            return;
        volumes_ = std::move(volumes);
    }
    postChange();
}

void VolumeMonitor::postChange() {
    auto* const application = QCoreApplication::instance();
    if (!application)
        return;
    QMetaObject::invokeMethod(
        application,
        [monitor = std::weak_ptr(self_)] {
            const auto self = monitor.lock();
            if (self && (*self)->onChange)
                (*self)->onChange();
        },
        Qt::QueuedConnection);
}

} // namespace slatewise
