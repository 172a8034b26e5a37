#include "Storage/AppDatabase.h"
#include "support/Files.h"
#include "support/MountedVolume.h"
#include "support/Process.h"
#include "support/RecordingServer.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <random>
#include <sstream>
#include <thread>

using namespace slatewise;
using namespace slatewise::test;

namespace {

using namespace std::chrono_literals;

constexpr int kUsualMoments = 10;
constexpr int kCards = 3;
constexpr int kAllSessions = 10'000;
constexpr std::int64_t kOuterSize = 1'500'000'000;

/// How often the program is killed. More than usual is for nights.
int moments() {
    const auto* wanted = std::getenv("SLATEWISE_CRASH_MOMENTS");
    return wanted ? std::atoi(wanted) : kUsualMoments;
}

/// An image that is mounted as it was left, as after a power cut.
class MountedImage {
public:
    MountedImage(const std::filesystem::path& image, std::filesystem::path place)
        : place_(std::move(place)) {
        std::filesystem::create_directories(place_);
        runPrivileged({"mount", "-o", "loop", image.native(), place_.native()});
    }
    ~MountedImage() {
        try {
            unmountOnceFree(place_);
        } catch (const std::exception& failure) {
            ADD_FAILURE() << failure.what();
        }
    }
    MountedImage(const MountedImage&) = delete;
    MountedImage& operator=(const MountedImage&) = delete;

    const std::filesystem::path& path() const { return place_; }

private:
    std::filesystem::path place_;
};

/// Looks up every file that the store or a manifest calls verified, on a disk that has moved to
/// another mount point, and prints how many there were. A manifest that was cut short says nothing
/// of any file; a store that was, is broken.
constexpr const char* kCheckClaims = R"python(
import hashlib, json, pathlib, sqlite3, sys
disk_then, disk_now, store, *archives = sys.argv[1:]

def claims():
    if pathlib.Path(store).exists():
        connection = sqlite3.connect(store)
        assert connection.execute("PRAGMA integrity_check").fetchone() == ("ok",), "store broken"
        tables = connection.execute("SELECT count(*) FROM sqlite_master").fetchone()[0]
        if tables:
            yield from connection.execute(
                "SELECT s.sessionRoot, f.relativePath, f.destSHA256 FROM files f "
                "JOIN sessions s ON s.id = f.sessionID WHERE f.verifyStatus = 'verified'")
    for archive in archives:
        for manifest in pathlib.Path(archive).glob("*/manifest.json"):
            try:
                session = json.loads(manifest.read_text())
            except ValueError:
                continue
            for row in session["files"]:
                if row["verify_status"] == "verified":
                    yield (session["destination"]["session_root"], row["relative_path"],
                           row["dest_sha256"])

count = 0
for root, relative, digest in claims():
    assert root.startswith(disk_then), root
    copy = pathlib.Path(disk_now + root[len(disk_then):]) / relative
    assert hashlib.sha256(copy.read_bytes()).hexdigest() == digest, copy
    count += 1
print(count)
)python";

/// Cards, and a disk whose image can be copied at any moment, as of one moment.
class CrashSafety : public ::testing::Test {
protected:
    // Power is cut for the disk inside: what the outer one lies on has no part in it.
    CrashSafety()
        : outer(MountedVolume::FileSystem::Xfs, kOuterSize, {}, "", scratchFolderInMemory()) {
        const auto image = outer / "disk.img";
        writeFile(image, "");
        std::filesystem::resize_file(image, kOuterSize / 3);
        runPrivileged({"mkfs.ext4", "-q", "-F", "-m", "0", image.native()});
        disk.emplace(image, folder / "disk");
        runPrivileged({"chmod", "0777", disk->path().native()});
        std::uint32_t seed = 0;
        for (int card = 0; card < kCards; ++card) {
            for (const std::size_t size : {3U, 70'000U, 1'048'577U}) {
                writeFile(this->card(card) / "DCIM" / std::to_string(size), bytesOf(size, ++seed));
            }
        }
    }

    /// Where the program keeps its history for that user.
    static std::filesystem::path storeOf(const std::filesystem::path& user) {
        return user / "data/Slatewise DIT/dit.sqlite";
    }

    /// Has the user's offloads reported to a service.
    static void reportTo(const RecordingServer& service, const std::filesystem::path& user) {
        const auto profile = storeOf(user).parent_path() / "service-profile.json";
        writeFile(profile,
                  R"({"accountID":"a","presenceToken":"t","saasAPIURL":")" + service.url() + "\"}");
        std::filesystem::permissions(profile, std::filesystem::perms(0600));
    }

    /// What the history has was told to the service, or waits for it.
    static void expectReported(const std::filesystem::path& user, const RecordingServer& service) {
        std::string told;
        for (const auto& request : service.requests())
            told += request.body;
        std::erase(told, '\\');
        const AppDatabase history(storeOf(user));
        std::size_t untold = 0;
        for (const auto& session : history.recentSessions(kAllSessions)) {
            if (told.find(session.sessionRoot + "/") == std::string::npos)
                ++untold;
        }
        EXPECT_LE(untold, history.pendingOutboxIDs().size());
    }

    std::filesystem::path card(int number) const {
        return folder / ("A00" + std::to_string(number));
    }

    bool isOnDisk(const std::filesystem::path& user) const {
        return user.native().starts_with(disk->path().native());
    }

    /// `user` is the folder of all that the program keeps for its user.
    ProcessResult offload(const std::filesystem::path& user,
                          const std::function<void(pid_t)>& whileRunning = {}) const {
        std::vector<std::string> words = {(programsFolder() / "slatewise-offload").native(),
                                          "--quiet",
                                          "--crew",
                                          isOnDisk(user) ? "Inside" : "Outside",
                                          "--template",
                                          "{Dest}/film/{CardName}_{HHmmss}",
                                          "--to",
                                          disk->path()};
        for (int number = 0; number < kCards; ++number)
            words.push_back(card(number));
        return run(words, userIn(user), whileRunning);
    }

    /// How long the program takes when nobody disturbs it.
    std::chrono::duration<double> durationOfARun(const std::filesystem::path& user) const {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(offload(user).exitCode, 0);
        return std::chrono::steady_clock::now() - begin;
    }

    /// The disk's image as it is at this moment, whatever still waits in the system's memory.
    std::filesystem::path snapshot() const {
        auto copy = outer / "snapshot.img";
        const auto result =
            run({"cp", "--reflink=always", (outer / "disk.img").native(), copy.native()});
        if (result.exitCode != 0)
            throw std::runtime_error(result.standardError);
        return copy;
    }

    /// Gives how many files are called verified on the disk as it was, all of which are there.
    int provedOn(const std::filesystem::path& image, const std::filesystem::path& user) const {
        const MountedImage then(image, folder / "then");
        const auto userThen =
            isOnDisk(user) ? then.path() / user.lexically_relative(disk->path()) : user;
        const auto check =
            run({"python3", "-c", kCheckClaims, disk->path(), then.path(), storeOf(userThen),
                 then.path() / "reports", userThen / "documents/SlatewiseDIT"});
        EXPECT_EQ(check.exitCode, 0) << check.standardError;
        return std::atoi(check.standardOutput.c_str());
    }

    TemporaryFolder folder;
    MountedVolume outer;
    std::optional<MountedImage> disk;
};

} // namespace

TEST_F(CrashSafety, WhatIsCalledVerifiedIsThereAfterAPowerCut) {
    // The user's files lie on the disk that loses power, or on another one that does not.
    const std::vector<std::filesystem::path> users = {disk->path() / "user", folder / "user"};
    // Slow enough for some of the moments to meet a report under way.
    const RecordingServer service([](const auto&, std::size_t) {
        auto answer = WireAnswer::of(200);
        answer.pause = 1ms;
        return answer;
    });
    reportTo(service, users.back());
    std::vector<std::chrono::duration<double>> durations;
    int proved = 0;
    for (const auto& user : users) {
        durations.push_back(durationOfARun(user));
        proved += provedOn(snapshot(), user);
    }
    // By the store and by the archive, each for its user, and by the disk for both.
    EXPECT_EQ(proved, 3 * kCards * (2 + 1 + 2 + 2));

    std::mt19937 random(20'260'301);
    std::uniform_real_distribution<double> anyMoment(0, 1);
    int killed = 0;
    // A run that ended before its moment came was faster than those before it, as the very first
    // one is slow: it teaches how long one takes, and another takes its place.
    for (int moment = 0; killed < moments() && moment < 3 * moments(); ++moment) {
        const auto which = static_cast<std::size_t>(moment) % users.size();
        const auto& user = users[which];
        const auto after = std::chrono::duration_cast<std::chrono::microseconds>(durations[which] *
                                                                                 anyMoment(random));
        SCOPED_TRACE(fmt::format("moment {} after {} us", moment, after.count()));
        std::filesystem::path image;
        const auto result = offload(user, [&](pid_t process) {
            std::this_thread::sleep_for(after);
            ::kill(process, SIGSTOP);
            image = snapshot();
            ::kill(process, SIGKILL);
        });
        if (result.exitCode == 128 + SIGKILL)
            ++killed;
        else
            durations[which] = after;
        proved += provedOn(image, user);
    }
    EXPECT_EQ(killed, moments());
    expectReported(users.back(), service);
    RecordProperty("killed", killed);
    RecordProperty("proved", proved);
    std::cout << killed << " of " << moments() << " killings done, " << proved
              << " statements proved\n";
}
