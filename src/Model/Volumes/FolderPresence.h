#pragma once

#include <QCoro/QCoroTask>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>

namespace slatewise {

/// Whether picked folders are still there, for a window that must not wait: a share whose server is
/// gone keeps whoever asks for as long as it likes. A folder that is silent counts as there, and is
/// not asked again before it has answered. GUI thread.
class FolderPresence {
public:
    /// Blocks, any thread.
    using ExistsTest = std::function<bool(const std::filesystem::path&)>;

    FolderPresence();
    explicit FolderPresence(ExistsTest exists);

    /// `onGone` is called when a folder that was silent turns out to be gone.
    void setOnGone(std::function<void()> onGone) { late_->onGone = std::move(onGone); }

    /// False for a folder that is known to be gone. A silent one takes 20 ms, once.
    bool isThere(const std::filesystem::path& folder);

private:
    /// What outlives this object as long as an answer is out.
    struct Late {
        std::set<std::filesystem::path> silent;
        /// Known from a late answer, for as long as `onGone` asks again.
        std::optional<std::filesystem::path> gone;
        std::function<void()> onGone;
    };

    static QCoro::Task<> hear(std::weak_ptr<Late> late, std::filesystem::path folder,
                              QCoro::Task<bool> looking);

    ExistsTest exists_;
    std::shared_ptr<Late> late_ = std::make_shared<Late>();
};

/// Whether anything bears that name, for whom a disk may keep waiting: asked on a worker, answered
/// on the GUI thread, maybe never. Whoever awaits it may be gone by then.
QCoro::Task<bool> isThereLater(std::filesystem::path path);

} // namespace slatewise
