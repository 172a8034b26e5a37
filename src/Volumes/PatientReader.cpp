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

/// One read on its way.
struct Errand {
    explicit Errand(std::shared_ptr<Known> of) : volume(std::move(of)) {}

    std::shared_ptr<Known> volume;
    std::optional<VolumeFacts> found;
    bool isOver = false;
    bool isLate = false;
};

} // namespace

struct PatientReader::Ledger {
    std::mutex lock;
    /// Something is over.
    std::condition_variable news;
    std::map<std::string, std::shared_ptr<Known>> volumes;

    /// Under the lock.
    std::shared_ptr<Known> volume(const std::string& identity) {
        auto& known = volumes[identity];
        if (!known)
            known = std::make_shared<Known>();
        return known;
    }

    /// Under the lock: what is not asked for any more is forgotten, unless a thread is still there.
    void keepOnly(const std::vector<Subject>& subjects) {
        std::erase_if(volumes, [&](const auto& entry) {
            return entry.second->late == 0 &&
                   std::none_of(subjects.begin(), subjects.end(), [&](const Subject& subject) {
                       return subject.identity == entry.first;
                   });
        });
    }

    void finish(Errand& errand, VolumeFacts facts) {
        const std::lock_guard guard(lock);
        errand.volume->last = facts;
        errand.found = std::move(facts);
        errand.isOver = true;
        if (errand.isLate)
            --errand.volume->late;
        news.notify_all();
    }
};

PatientReader::PatientReader(std::chrono::milliseconds patience)
    : patience_(patience), ledger_(std::make_shared<Ledger>()) {}

std::vector<std::optional<VolumeFacts>> PatientReader::read(const std::vector<Subject>& subjects,
                                                            const Read& read) {
    const auto deadline = std::chrono::steady_clock::now() + patience_;
    std::vector<std::shared_ptr<Errand>> errands;
    std::unique_lock guard(ledger_->lock);
    for (const auto& subject : subjects) {
        const auto errand = std::make_shared<Errand>(ledger_->volume(subject.identity));
        errands.push_back(errand);
        errand->isOver = errand->volume->late > 0;
        if (errand->isOver)
            continue;
        try {
            std::thread([ledger = ledger_, errand, read, mountPoint = subject.mountPoint] {
                ledger->finish(*errand, read(mountPoint));
            }).detach();
        } catch (const std::system_error&) {
            // No thread to be had: as good as silent for this time.
            errand->isOver = true;
        }
    }
    ledger_->news.wait_until(guard, deadline, [&] {
        return std::all_of(errands.begin(), errands.end(),
                           [](const auto& errand) { return errand->isOver; });
    });

    std::vector<std::optional<VolumeFacts>> found;
    for (const auto& errand : errands) {
        if (!errand->isOver) {
            errand->isLate = true;
            ++errand->volume->late;
        }
        found.push_back(errand->found ? errand->found : errand->volume->last);
    }
    ledger_->keepOnly(subjects);
    return found;
}

} // namespace slatewise
