#include "Model/Volumes/FolderPresence.h"

#include "Platform/Files/FileSystem.h"
#include "Platform/Worker.h"

#include <chrono>
#include <future>
#include <utility>

namespace slatewise {

namespace {

/// A disk that is awake answers in microseconds; a window that waits this long shows nothing of it.
constexpr std::chrono::milliseconds kPatience{20};

} // namespace

FolderPresence::FolderPresence()
    : FolderPresence([](const auto& folder) { return FileSystem::exists(folder); }) {}

FolderPresence::FolderPresence(ExistsTest exists) : exists_(std::move(exists)) {}

bool FolderPresence::isThere(const std::filesystem::path& folder) {
    if (late_->gone == folder)
        return false;
    if (late_->silent.contains(folder))
        return true;
    const auto answer = std::make_shared<std::promise<bool>>();
    auto answered = answer->get_future();
    auto looking = onWorker([exists = exists_, folder, answer] {
        const bool isThere = exists(folder);
        answer->set_value(isThere);
        return isThere;
    });
    if (answered.wait_for(kPatience) == std::future_status::ready)
        return answered.get();
    late_->silent.insert(folder);
    hear(late_, folder, std::move(looking));
    return true;
}

QCoro::Task<> FolderPresence::hear(std::weak_ptr<Late> late, std::filesystem::path folder,
                                   QCoro::Task<bool> looking) {
    const bool isThere = co_await looking;
    const auto heard = late.lock();
    if (!heard)
        co_return;
    heard->silent.erase(folder);
    if (isThere || !heard->onGone)
        co_return;
    // Whoever asks again gets this answer: the next one might come as late.
    heard->gone = folder;
    heard->onGone();
    heard->gone.reset();
}

QCoro::Task<bool> isThereLater(std::filesystem::path path) {
    const auto looking = onWorker([path = std::move(path)] { return FileSystem::exists(path); });
    const bool isThere = co_await looking;
    co_return isThere;
}

} // namespace slatewise
