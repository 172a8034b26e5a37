#include "Volumes/PatientReader.h"

#include "support/Leaks.h"

#include <gmock/gmock.h>

#include <atomic>
#include <semaphore>
#include <thread>

using namespace slatewise;
using namespace slatewise::test;
using namespace std::chrono_literals;

namespace {

constexpr auto kPatience = 300ms;

VolumeFacts named(const std::string& name) {
    VolumeFacts facts;
    facts.volumeName = name;
    return facts;
}

/// Answers for every volume at once, except for "/hung", where each read waits until it is
/// released. Shared with reads that outlive a test's interest in them.
struct Volumes {
    std::counting_semaphore<> release{0};
    std::atomic<int> readsOfHung = 0;
};

PatientReader::Read readOf(std::shared_ptr<Volumes> volumes) {
    return [volumes = std::move(volumes)](const std::filesystem::path& mountPoint) {
        if (mountPoint == "/hung") {
            ++volumes->readsOfHung;
            volumes->release.acquire();
        }
        return named("read " + mountPoint.native());
    };
}

class PatientReading : public ::testing::Test {
protected:
    std::vector<std::string> names(const std::vector<PatientReader::Subject>& subjects) {
        const auto start = std::chrono::steady_clock::now();
        std::vector<std::string> result;
        for (const auto& facts : reader.read(subjects, readOf(volumes)))
            result.push_back(facts ? facts->volumeName : "silent");
        waited = std::chrono::steady_clock::now() - start;
        return result;
    }

    std::shared_ptr<Volumes> volumes = std::make_shared<Volumes>();
    PatientReader reader{kPatience};
    const std::ptrdiff_t threadsBefore = threadCount();
    std::chrono::steady_clock::duration waited{};
};

using Names = std::vector<std::string>;

} // namespace

TEST_F(PatientReading, WaitsOnceForAVolumeThatHangsAndNotForTheOthers) {
    const std::vector<PatientReader::Subject> subjects = {{"1", "/A"}, {"2", "/hung"}, {"3", "/B"}};
    EXPECT_EQ(names(subjects), (Names{"read /A", "silent", "read /B"}));
    EXPECT_GE(waited, kPatience);
    for (int again = 0; again < 3; ++again) {
        EXPECT_EQ(names(subjects), (Names{"read /A", "silent", "read /B"}));
        EXPECT_LT(waited, kPatience);
    }
    EXPECT_EQ(volumes->readsOfHung, 1);
    EXPECT_LE(threadCountSoon(threadsBefore + 1), threadsBefore + 1);

    // It comes back, and is asked as before.
    volumes->release.release(2);
    EXPECT_LE(threadCountSoon(threadsBefore), threadsBefore);
    EXPECT_EQ(names(subjects), (Names{"read /A", "read /hung", "read /B"}));
}

TEST_F(PatientReading, KnowsWhatASilentVolumeLastSaid) {
    const std::vector<PatientReader::Subject> subjects = {{"1", "/hung"}};
    volumes->release.release(1);
    EXPECT_EQ(names(subjects), (Names{"read /hung"}));
    EXPECT_EQ(names(subjects), (Names{"read /hung"}));
    EXPECT_GE(waited, kPatience);
    // Another volume at the same place has said nothing yet.
    EXPECT_EQ(names({{"2", "/hung"}}), (Names{"silent"}));
    volumes->release.release(2);
    EXPECT_LE(threadCountSoon(threadsBefore), threadsBefore);
}

TEST_F(PatientReading, ForgetsWhatIsNoLongerAskedFor) {
    volumes->release.release(1);
    EXPECT_EQ(names({{"1", "/hung"}}), (Names{"read /hung"}));
    EXPECT_EQ(names({}), Names{});
    EXPECT_EQ(names({{"1", "/hung"}}), (Names{"silent"}));
    volumes->release.release(1);
    EXPECT_LE(threadCountSoon(threadsBefore), threadsBefore);
}

TEST_F(PatientReading, ServesSeveralThreadsAtOnce) {
    std::vector<PatientReader::Subject> subjects;
    Names expected;
    for (int number = 0; number < 20; ++number) {
        const auto place = "/" + std::to_string(number);
        subjects.push_back({place, place});
        expected.push_back("read " + place);
    }
    std::atomic<int> wrong = 0;
    {
        std::vector<std::jthread> askers;
        for (int asker = 0; asker < 4; ++asker) {
            askers.emplace_back([&, asker] {
                for (int round = 0; round < 50; ++round) {
                    // One of them asks for nothing in between, which forgets what was known.
                    const auto asked =
                        asker == 0 ? std::vector<PatientReader::Subject>() : subjects;
                    const auto found = reader.read(asked, readOf(volumes));
                    for (std::size_t index = 0; index < found.size(); ++index)
                        wrong += !found[index] || found[index]->volumeName != expected[index];
                }
            });
        }
    }
    EXPECT_EQ(wrong, 0);
}
