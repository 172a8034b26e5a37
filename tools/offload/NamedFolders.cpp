#include "NamedFolders.h"

#include "Language/L10n.h"
#include "Offload/OffloadError.h"
#include "Offload/ReportNames.h"
#include "Offload/TreeWalker.h"
#include "Platform/Text.h"
#include "Platform/Worker.h"
#include "Reports/ReportFolder.h"
#include "Volumes/DiskUtilClient.h"
#include "Volumes/PickedFolder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace slatewise::tool {

namespace {

using namespace std::chrono_literals;

/// A disk that has to spin up needs some seconds.
constexpr auto kPatience = 15s;

/// What is known before anybody has looked.
NamedFolder unseen(const std::filesystem::path& typed, VolumeKind kind) {
    auto path = typed.lexically_normal();
    if (!path.has_filename() && path.has_relative_path())
        path = path.parent_path();
    return {.volume = pickedFolder({}, path, kind)};
}

bool isThere(const std::filesystem::path& path) {
    std::error_code failure;
    (void)std::filesystem::symlink_status(path, failure);
    return failure != std::errc::no_such_file_or_directory && failure != std::errc::not_a_directory;
}

/// Takes "CARD=CAMERA,CREW" apart. A path that is there as it was typed is just that, "=" or not;
/// and no path is cut in two at a "=" in the name of a folder above. Without a comma it is a path,
/// too: where "A001=2" is not mounted, nobody wants "A001" for it.
NamedFolder cardNamed(const std::string& typed) {
    const auto sign = typed.rfind('=');
    const auto comma = typed.find(',', std::min(sign, typed.size()));
    if (comma == std::string::npos || typed.find('/', sign) != std::string::npos || isThere(typed))
        return unseen(typed, VolumeKind::CameraCard);
    auto card = unseen(typed.substr(0, sign), VolumeKind::CameraCard);
    card.isSurelyCard = true;
    card.camera = typed.substr(sign + 1, comma - sign - 1);
    card.crew = typed.substr(comma + 1);
    return card;
}

bool isEmpty(const std::filesystem::path& folder) {
    return std::all_of(
        begin(std::filesystem::directory_iterator(folder)), {}, [](const auto& entry) {
            const auto name = entry.path().filename().native();
            return name == "lost+found" ||
                   TreeWalker::shouldSkip(name, name, TreeWalker::defaultSkipNames());
        });
}

/// What bears the name and cannot be looked at is no set of ours, and hinders nobody.
bool hasReportSets(const std::filesystem::path& folder) {
    std::error_code failure;
    std::filesystem::directory_iterator set(ReportFolder::destinationReportsRoot(folder), failure);
    while (!failure && set != std::filesystem::directory_iterator()) {
        std::error_code hidden;
        if (std::filesystem::exists(set->path() / ReportNames::manifest, hidden))
            return true;
        set.increment(failure);
    }
    return false;
}

/// Of a disk that is taken out, desktops take the mount point away. A path that is nowhere else may
/// be mistyped as well.
bool meansGone(const std::filesystem::filesystem_error& failure) {
    constexpr std::array kCodes = {ESTALE, ENODEV, ENXIO, ENOMEDIUM, ENOTCONN, ECONNABORTED};
    const int code = failure.code().value();
    const auto& path = failure.path1().native();
    const bool wasMounted = path.starts_with("/media/") || path.starts_with("/run/media/");
    return (code == ENOENT && wasMounted) ||
           std::find(kCodes.begin(), kCodes.end(), code) != kCodes.end();
}

/// Blocks as long as the disk does.
void look(NamedFolder& folder, L10n l10n) {
    const auto& named = folder.volume.facts.mountPoint;
    try {
        const auto path = std::filesystem::canonical(named);
        folder.isNoFolder = !std::filesystem::is_directory(path);
        if (folder.isNoFolder)
            return;
        const auto kind = folder.volume.kind;
        folder.isEmpty = isEmpty(path);
        folder.hasReportSets = hasReportSets(path);
        folder.volume = pickedFolder(DiskUtilClient::facts(path), path, kind);
    } catch (const std::exception& failure) {
        folder.obstacle = describe(failure, l10n);
        const auto* known = dynamic_cast<const std::filesystem::filesystem_error*>(&failure);
        folder.isGone = known && meansGone(*known);
    }
}

/// Where the threads that look leave what they have seen. Outlives whoever waits for them.
struct Board {
    std::mutex lock;
    std::condition_variable_any changed;
    NamedFolders seen;
    std::size_t missing = 0;
};

/// `list` is one of the two lists of what is seen, which keep their length.
void lookAside(const std::shared_ptr<Board>& board, std::vector<NamedFolder> NamedFolders::*list,
               std::size_t index, const std::string& typed, L10n l10n) {
    const bool isCard = list == &NamedFolders::cards;
    WorkerPool::start([=] {
        auto folder = isCard ? cardNamed(typed) : unseen(typed, VolumeKind::Destination);
        look(folder, l10n);
        const std::lock_guard guard(board->lock);
        (board->seen.*list)[index] = std::move(folder);
        --board->missing;
        board->changed.notify_all();
    });
}

NamedFolder silent(const std::string& typed, VolumeKind kind, const Texts& texts) {
    auto folder = unseen(typed, kind);
    folder.obstacle = texts.doesNotAnswer(typed);
    folder.isGone = true;
    return folder;
}

} // namespace

NamedFolders lookAt(const Arguments& arguments, const Texts& texts, const std::stop_token& stop) {
    const auto board = std::make_shared<Board>();
    for (const auto& typed : arguments.cards)
        board->seen.cards.push_back(silent(typed, VolumeKind::CameraCard, texts));
    for (const auto& typed : arguments.destinations)
        board->seen.destinations.push_back(silent(typed, VolumeKind::Destination, texts));
    board->missing = arguments.cards.size() + arguments.destinations.size();

    for (std::size_t index = 0; index < arguments.cards.size(); ++index)
        lookAside(board, &NamedFolders::cards, index, arguments.cards[index], texts.shared);
    for (std::size_t index = 0; index < arguments.destinations.size(); ++index)
        lookAside(board, &NamedFolders::destinations, index, arguments.destinations[index],
                  texts.shared);

    std::unique_lock guard(board->lock);
    board->changed.wait_for(guard, stop, kPatience, [&] { return board->missing == 0; });
    return board->seen;
}

std::optional<std::string> NamedFolders::misuse(const Texts& texts) const {
    std::vector<std::filesystem::path> known;
    for (const auto* list : {&cards, &destinations}) {
        const auto begin = static_cast<std::ptrdiff_t>(known.size());
        for (const auto& folder : *list) {
            const auto& path = folder.volume.facts.mountPoint;
            if (folder.isNoFolder)
                return texts.noFolder(path.native());
            const auto found = std::find(known.begin(), known.end(), path);
            if (found != known.end()) {
                return found - known.begin() < begin ? texts.cardAndDestination(path.native())
                                                     : texts.namedTwice(path.native());
            }
            known.push_back(path);
        }
    }
    return std::nullopt;
}

std::optional<std::string> NamedFolders::misplacedDestination(const Texts& texts) const {
    const auto found = std::find_if(cards.begin(), cards.end(), [](const auto& card) {
        return card.hasReportSets && !card.isSurelyCard;
    });
    if (found == cards.end())
        return std::nullopt;
    return texts.looksLikeDestination(found->volume.facts.mountPoint.native());
}

} // namespace slatewise::tool
