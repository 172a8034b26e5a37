#include "Volumes/PatientReader.h"

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>

namespace slatewise {

namespace {

/// What is known of one volume from one call to the next.
struct Known {
    std::optional<VolumeFacts> last;
    /// Reads that nobody waits for any more and that are still out.
    int late = 0;
};

/// One read to be made.
struct Errand {
    std::shared_ptr<Known> volume;
    std::filesystem::path mountPoint;
    bool isStarted = false;
    bool isOver = false;
    bool isLate = false;
    std::optional<VolumeFacts> found = std::nullopt;
};

/// What one call wants to know. Outlives the call when a read of it is late.
struct Round {
    PatientReader::Read read;
    std::vector<Errand> errands;
    bool isClosed = false;

    /// Null when there is none left.
    Errand* takeNext() {
        const auto next = std::find_if(errands.begin(), errands.end(), [](const Errand& errand) {
            return !errand.isStarted && !errand.isOver;
        });
        if (isClosed || next == errands.end())
            return nullptr;
        next->isStarted = true;
        return &*next;
    }

    bool isDone() const {
        return std::all_of(errands.begin(), errands.end(),
                           [](const Errand& errand) { return errand.isOver; });
    }

    bool hasAnythingToStart() const {
        return std::any_of(errands.begin(), errands.end(), [](const Errand& errand) {
            return !errand.isStarted && !errand.isOver;
        });
    }

    /// What is still under way is late from now on, and nothing more is started.
    void close() {
        isClosed = true;
        for (auto& errand : errands) {
            if (errand.isStarted && !errand.isOver) {
                errand.isLate = true;
                ++errand.volume->late;
            }
        }
    }
};

/// False when the system has no thread to give: then the volumes are as good as silent this time.
bool startThread(std::function<void()> work) {
    try {
        std::thread(std::move(work)).detach();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

} // namespace

/// Its lock guards the rounds as well.
struct PatientReader::Ledger {
    std::mutex lock;
    /// A round is done.
    std::condition_variable news;
    std::map<std::string, std::shared_ptr<Known>> volumes;

    Errand errandTo(const Subject& subject) {
        auto& known = volumes[subject.identity];
        if (!known)
            known = std::make_shared<Known>();
        return {.volume = known, .mountPoint = subject.mountPoint, .isOver = known->late > 0};
    }

    /// What is not asked for any more is forgotten, unless a thread is still there.
    void keepOnly(const std::vector<Subject>& subjects) {
        std::erase_if(volumes, [&](const auto& entry) {
            return entry.second->late == 0 &&
                   std::none_of(subjects.begin(), subjects.end(), [&](const Subject& subject) {
                       return subject.identity == entry.first;
                   });
        });
    }

    /// Makes the reads of a round one after the other, as long as none of them hangs.
    void run(Round& round) {
        std::unique_lock guard(lock);
        while (auto* const errand = round.takeNext()) {
            guard.unlock();
            auto facts = round.read(errand->mountPoint);
            guard.lock();
            errand->volume->last = facts;
            errand->found = std::move(facts);
            errand->isOver = true;
            if (errand->isLate)
                --errand->volume->late;
        }
        news.notify_all();
    }
};

PatientReader::PatientReader(std::chrono::milliseconds patience)
    : patience_(patience), ledger_(std::make_shared<Ledger>()) {}

std::vector<std::optional<VolumeFacts>> PatientReader::read(const std::vector<Subject>& subjects,
                                                            const Read& read) {
    // A thread that has not come back by then may hang; another one goes on with what is left.
    constexpr std::chrono::milliseconds kTimeForOneThread{50};
    const auto deadline = std::chrono::steady_clock::now() + patience_;
    const auto round = std::make_shared<Round>();
    round->read = read;
    std::unique_lock guard(ledger_->lock);
    for (const auto& subject : subjects)
        round->errands.push_back(ledger_->errandTo(subject));
    while (!round->isDone() && std::chrono::steady_clock::now() < deadline) {
        const bool needsThread = round->hasAnythingToStart();
        if (needsThread && !startThread([ledger = ledger_, round] { ledger->run(*round); }))
            break;
        const auto until =
            needsThread ? std::chrono::steady_clock::now() + kTimeForOneThread : deadline;
        ledger_->news.wait_until(guard, std::min(until, deadline), [&] { return round->isDone(); });
    }
    round->close();

    std::vector<std::optional<VolumeFacts>> found;
    for (const auto& errand : round->errands)
        found.push_back(errand.found ? errand.found : errand.volume->last);
    ledger_->keepOnly(subjects);
    return found;
}

} // namespace slatewise
