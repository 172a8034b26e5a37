#include "Model/FolderPresence.h"

#include "Platform/FileSystem.h"
#include "Platform/Worker.h"

#include <chrono>
#include <future>

namespace slatewise {

namespace {

/// A disk that is awake answers in microseconds; a window that waits this long shows nothing of it.
constexpr std::chrono::milliseconds kPatience{20};

} // namespace

FolderPresence::FolderPresence()
    : FolderPresence([](const auto& folder) { return FileSystem::exists(folder); }) {}

FolderPresence::FolderPresence(ExistsTest exists) : exists_(std::move(exists)) {}

bool FolderPresence::isThere(const std::filesystem::path& folder) {
    if (late_->folders.contains(folder))
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
    late_->folders.insert(folder);
    hear(late_, folder, std::move(looking));
    return true;
}

QCoro::Task<> FolderPresence::hear(std::weak_ptr<Late> late, std::filesystem::path folder,
                                   QCoro::Task<bool> looking) {
    const bool isThere = co_await looking;
    const auto heard = late.lock();
    if (!heard)
        co_return;
    heard->folders.erase(folder);
    if (!isThere && heard->onGone)
        heard->onGone();
}

} // namespace slatewise
