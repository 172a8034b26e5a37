#include "Volumes/VolumeMonitor.h"

#include "Platform/Disks/BlockDevices.h"
#include "Volumes/DiskUtilClient.h"
#include "support/Leaks.h"
#include "support/MountedVolume.h"
#include "support/Process.h"
#include "support/Waiting.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

using namespace slatewise;
using namespace slatewise::test;
using namespace std::chrono_literals;
using std::chrono::milliseconds;
using namespace ::testing;
using Volume = MountedVolume::FileSystem;

namespace {

constexpr std::int64_t kSmall = 16 * 1'048'576;

/// Without a disk service, so that no answer depends on the machine that runs the tests.
VolumeMonitor::Options options(MountEvents::Source events = MountEvents::Source::Kernel) {
    return {.sources = {.busAddress = "unix:path=/nowhere"}, .events = events};
}

class Monitoring : public ::testing::Test {
protected:
    /// Runs the GUI thread's events until the monitor has called so often, or the time is over.
    /// Gives the time it took.
    milliseconds waitForCalls(int expected, milliseconds limit) {
        return waitFor([&] { return calls >= expected; }, limit);
    }

    /// As above, until it has called since the last time and this one volume is there.
    milliseconds waitForNews(const VolumeMonitor& monitor, const std::string& volume) {
        const auto taken = waitFor(
            [&] { return calls > told && shown(monitor.currentVolumes()) == std::vector{volume}; },
            10s);
        told = calls;
        return taken;
    }

    void start(VolumeMonitor& monitor) {
        monitor.onChange = [this] {
            ++calls;
            onGuiThread &= QThread::currentThread() == QCoreApplication::instance()->thread();
        };
        monitor.start();
    }

    /// "name kind" of each volume.
    static std::vector<std::string> shown(const std::vector<ClassifiedVolume>& volumes) {
        std::vector<std::string> result;
        for (const auto& volume : volumes)
            result.push_back(volume.name() + " " + std::string(rawValue(volume.kind)));
        return result;
    }

    TemporaryFolder root;
    int calls = 0;
    int told = 0;
    bool onGuiThread = true;

private:
    static milliseconds waitFor(const std::function<bool()>& condition, milliseconds limit) {
        QElapsedTimer clock;
        clock.start();
        while (!condition() && clock.elapsed() < limit.count())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents,
                                            10);
        return milliseconds(clock.elapsed());
    }
};

} // namespace

TEST_F(Monitoring, FollowsWhatIsMountedWithinHalfASecond) {
    // An empty root has nothing to tell; the folder in it comes into being later.
    const auto media = root / "media";
    VolumeMonitor monitor(media, options());
    start(monitor);
    waitForCalls(1, 500ms);
    EXPECT_EQ(calls, 0);

    std::filesystem::create_directory(media);
    MountedVolume card(Volume::ExFat, kSmall, media / "B card", "");
    std::filesystem::create_directory(card / "DCIM");
    calls = 0;
    MountedVolume disk(Volume::Ext4, kSmall, media / "a disk", "");
    EXPECT_LT(waitForCalls(1, 5s), 500ms);
    monitor.refresh();
    waitForCalls(calls + 1, 200ms);
    EXPECT_THAT(shown(monitor.currentVolumes()),
                ElementsAre("a disk destination", "B card cameraCard"));
    EXPECT_THAT(shown(monitor.destinations()), ElementsAre("a disk destination"));
    EXPECT_EQ(monitor.currentVolumes().front().id(),
              BlockDevices::pathUnder(disk.path()).filename());
    EXPECT_EQ(monitor.currentVolumes().front().facts.protocolName, "Disk Image");

    // Further reads find nothing new, and neither does filling the disk.
    calls = 0;
    writeFile(disk / "footage", std::string(8 * 1'048'576, 'x'));
    monitor.refresh();
    waitForCalls(1, 300ms);
    EXPECT_EQ(calls, 0);

    std::filesystem::create_directory(disk / "DCIM");
    monitor.refresh();
    waitForCalls(1, 1s);
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(monitor.destinations(), IsEmpty());

    calls = 0;
    card.unmount();
    EXPECT_LT(waitForCalls(1, 5s), 500ms);
    disk.unmount();
    EXPECT_LT(waitForCalls(2, 5s), 500ms);
    std::filesystem::remove_all(media);
    monitor.refresh();
    EXPECT_THAT(monitor.currentVolumes(), IsEmpty());
    EXPECT_TRUE(onGuiThread);
}

TEST_F(Monitoring, ADiskThatIsMountedAtTwoPlacesIsOneVolume) {
    const MountedVolume disk(Volume::Ext4, kSmall, root / "a disk", "");
    const BindMount second(disk.path(), root / "a second place");
    VolumeMonitor monitor(root.path(), options(MountEvents::Source::None));
    monitor.refresh();
    EXPECT_THAT(shown(monitor.currentVolumes()), ElementsAre("a disk destination"));
}

TEST_F(Monitoring, SeesEverythingWithinAPeriodWithoutEvents) {
    std::filesystem::create_directory(root / "SSD");
    EXPECT_EQ(VolumeMonitor::Options().period, 4s) << "none that a user waits for in vain";
    auto often = options(MountEvents::Source::None);
    often.period = 600ms; // beyond what the first read may take
    VolumeMonitor monitor(root.path(), often);
    start(monitor);
    // The first read comes at once.
    EXPECT_LT(waitForNews(monitor, "SSD unknown"), 500ms);
    // A read may fall between mounting a disk and making it the user's.
    MountedVolume disk(Volume::Ext4, kSmall, root / "SSD", "");
    EXPECT_LT(waitForNews(monitor, "SSD destination"), 1500ms);
    disk.unmount();
    EXPECT_LT(waitForNews(monitor, "SSD unknown"), 1500ms);
}

TEST_F(Monitoring, SortsByNameAndTellsOfARenaming) {
    for (const char* name : {"b10", "A2", "a10", "Éclair", "éclair2"})
        std::filesystem::create_directory(root / name);
    VolumeMonitor monitor(root.path(), options());
    start(monitor);
    waitForCalls(1, 2s);
    EXPECT_THAT(shown(monitor.currentVolumes()),
                ElementsAre("a10 unknown", "A2 unknown", "b10 unknown", "Éclair unknown",
                            "éclair2 unknown"));
    std::filesystem::rename(root / "b10", root / "c10");
    monitor.refresh();
    waitForCalls(2, 2s);
    EXPECT_EQ(calls, 2);
}

TEST_F(Monitoring, LeavesEqualNamesInTheOrderOfTheListing) {
    const std::string name = "abcdef";
    for (unsigned capitals = 0; capitals < 1U << name.size(); ++capitals) {
        auto folder = name;
        for (std::size_t at = 0; at < name.size(); ++at) {
            if (capitals & (1U << at))
                folder[at] = static_cast<char>(folder[at] - 'a' + 'A');
        }
        std::filesystem::create_directory(root / folder);
    }
    VolumeMonitor monitor(root.path(), options());
    monitor.refresh();
    std::vector<std::filesystem::path> places;
    for (const auto& volume : monitor.currentVolumes())
        places.push_back(volume.facts.mountPoint);
    EXPECT_EQ(places, DiskUtilClient::listMounts(root.path()));
}

TEST_F(Monitoring, EndsQuietly) {
    std::filesystem::create_directory(root / "SSD");
    // The first question to the bus starts a thread that Qt keeps until the process ends.
    VolumeMonitor(root.path(), options()).refresh();
    const auto threads = threadCount();
    {
        VolumeMonitor monitor(root.path(), options());
        start(monitor);
        ASSERT_TRUE(waitUntil([&] { return !monitor.currentVolumes().empty(); }));
        monitor.stop();
        monitor.stop();
        EXPECT_LE(threadCountSoon(threads), threads);
        // What was on its way still comes.
        waitForCalls(1, 500ms);
        EXPECT_EQ(calls, 1);
        // It can be started again, and ends while something is on its way.
        std::filesystem::create_directory(root / "CARD");
        monitor.start();
        ASSERT_TRUE(waitUntil([&] { return monitor.currentVolumes().size() == 2; }));
    }
    waitForCalls(2, 200ms);
    EXPECT_EQ(calls, 1);
}

TEST_F(Monitoring, MayBeRefreshedFromSeveralThreads) {
    std::filesystem::create_directory(root / "STAYS");
    VolumeMonitor monitor(root.path(), options());
    monitor.refresh();
    start(monitor);
    std::atomic<int> lost = 0;
    {
        std::vector<std::jthread> others;
        for (int thread = 0; thread < 3; ++thread) {
            others.emplace_back([&] {
                for (int round = 0; round < 50; ++round) {
                    monitor.refresh();
                    const auto volumes = monitor.currentVolumes();
                    lost += std::none_of(volumes.begin(), volumes.end(), [](const auto& volume) {
                        return volume.name() == "STAYS";
                    });
                }
            });
        }
        for (int round = 0; round < 50; ++round) {
            std::filesystem::create_directory(root / "COMES");
            waitForCalls(calls + 1, 5ms);
            std::filesystem::remove(root / "COMES");
        }
    }
    EXPECT_EQ(lost, 0);
    monitor.refresh();
    EXPECT_THAT(shown(monitor.currentVolumes()), ElementsAre("STAYS unknown"));
}

TEST_F(Monitoring, IsNotHeldUpByADeadVolume) {
    MountedVolume card(Volume::ExFat, kSmall, root / "CARD", "");
    std::filesystem::create_directory(card / "DCIM");
    VolumeMonitor monitor(root.path(), options());
    start(monitor);
    waitForCalls(1, 2s);
    ASSERT_THAT(shown(monitor.currentVolumes()), ElementsAre("CARD cameraCard"));

    // The program behind the file system stops: whoever looks into it waits for ever.
    card.signalItsProgram(SIGSTOP);
    calls = 0;
    MountedVolume disk(Volume::Ext4, kSmall, root / "SSD", "");
    EXPECT_LT(waitForCalls(1, 10s), 4s);
    // The card stays what it was.
    EXPECT_THAT(shown(monitor.currentVolumes()), ElementsAre("CARD cameraCard", "SSD destination"));
    // From now on nobody waits for it any more.
    disk.unmount();
    EXPECT_LT(waitForCalls(2, 10s), 500ms);
    QElapsedTimer clock;
    clock.start();
    monitor.stop();
    EXPECT_LT(clock.elapsed(), 500);
    card.signalItsProgram(SIGCONT);
}

TEST_F(Monitoring, LeaksNothing) {
    for (const auto* name : {"A", "B", "C"})
        std::filesystem::create_directory(root / name);
    VolumeMonitor monitor(root.path(), options());
    const auto refresh = [&](int times) {
        while (times-- > 0)
            monitor.refresh();
    };
    refresh(50);
    const auto memory = residentKiB();
    const auto threads = threadCount();
    const auto descriptors = entriesOf("/proc/self/fd");
    refresh(1000);
    EXPECT_LT(residentKiB() - memory, 2048);
    EXPECT_LE(threadCountSoon(threads), threads);
    EXPECT_EQ(entriesOf("/proc/self/fd"), descriptors);
}
