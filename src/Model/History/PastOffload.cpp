#include "Model/History/PastOffload.h"

#include "Language/L10n.h"
#include "Offload/TreeWalker.h"
#include "Platform/Error.h"
#include "Platform/Text.h"
#include "Storage/AppDatabase.h"
#include "Storage/AppLog.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>

namespace slatewise {

namespace {

/// What a card is known by; dates as exactly as the store has them. Fails when part of the card
/// cannot be read, since what lies there may be new.
std::vector<StoredFile> contentOf(const ClassifiedVolume& card, const SkipNames& skipNames) {
    const RootFolder root(card.facts.mountPoint);
    std::optional<PosixError> failure;
    const TreeWalker::WalkObserver observer{.unreadable = [&](const auto& path, int code) {
        if (code != EACCES || !TreeWalker::isRepairFolder(root, path))
            failure.emplace("read", card.facts.mountPoint / path, code);
    }};
    const auto entries = TreeWalker::walk(root, skipNames, {}, observer);
    if (failure)
        throw PosixError(*failure);
    std::vector<StoredFile> files;
    for (const auto& entry : entries) {
        if (entry.shouldCopy)
            files.push_back({Text::displayable(entry.relativePath), entry.sizeBytes,
                             entry.mtime ? Clock::databaseText(*entry.mtime) : std::string()});
    }
    return files;
}

class Search {
public:
    Search(const AppDatabase& database, const ClassifiedVolume& card, std::int64_t copyableBytes,
           const SkipNames& skipNames)
        : database_(database), card_(card), copyableBytes_(copyableBytes), skipNames_(skipNames) {}

    std::optional<PastOffload> run() {
        // A picked folder is not all that its disk holds.
        const auto uuid =
            card_.isPickedFolder() ? std::string() : card_.facts.volumeUUID.value_or("");
        std::optional<PastOffload> asItIs;
        std::optional<PastOffload> asItWas;
        for (const auto& [session, cardUUID] : database_.verifiedSessions(uuid, copyableBytes_)) {
            if (holdsTheSame(session))
                add(session, asItIs);
            else if (!uuid.empty() && cardUUID == uuid)
                add(session, asItWas);
        }
        if (asItIs)
            return asItIs;
        if (asItWas)
            asItWas->hasChanged = true;
        return asItWas;
    }

private:
    bool holdsTheSame(const SessionRecord& session) {
        if (session.bytesCopied != copyableBytes_)
            return false;
        // Only now is it worth a walk.
        if (!content_) {
            content_ = contentOf(card_, skipNames_);
            std::sort(content_->begin(), content_->end());
        }
        auto stored = database_.filesOf(session.id);
        std::sort(stored.begin(), stored.end());
        return !stored.empty() && stored == *content_;
    }

    /// Sessions come latest first.
    static void add(const SessionRecord& session, std::optional<PastOffload>& past) {
        if (!past)
            past = PastOffload{session.startedAt, {}, false};
        auto& disks = past->disks;
        if (std::find(disks.begin(), disks.end(), session.destName) == disks.end())
            disks.insert(std::upper_bound(disks.begin(), disks.end(), session.destName),
                         session.destName);
    }

    const AppDatabase& database_;
    const ClassifiedVolume& card_;
    const std::int64_t copyableBytes_;
    const SkipNames& skipNames_;
    std::optional<std::vector<StoredFile>> content_;
};

} // namespace

std::optional<PastOffload> PastOffload::find(const AppDatabase& database,
                                             const ClassifiedVolume& card,
                                             std::int64_t copyableBytes,
                                             const SkipNames& skipNames) {
    try {
        return Search(database, card, copyableBytes, skipNames).run();
    } catch (const std::exception& failure) {
        AppLog::append("Past offloads not looked up: " + describe(failure));
        return std::nullopt;
    }
}

std::string PastOffload::text(L10n l10n) const {
    const auto date =
        Clock::mediumDate(at, Language::locale(l10n.language()), Clock::Zone::Machine);
    const auto names = Text::displayable(fmt::format("{}", fmt::join(disks, ", ")));
    return hasChanged ? l10n.offloadedAndChanged(date, names) : l10n.offloadedBefore(date, names);
}

} // namespace slatewise
