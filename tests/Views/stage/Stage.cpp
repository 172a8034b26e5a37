#include "Stage.h"

#include "Language/L10n.h"
#include "Model/QtText.h"
#include "Offload/CopyProgress.h"
#include "Offload/OffloadError.h"
#include "Offload/TreeWalker.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>

namespace slatewise::test {

namespace {

constexpr double kGB = 1e9;
constexpr auto kMounts = "/media/dit/";

QString idOf(const QString& name) {
    return "dev-" + name;
}

} // namespace

/// What workers are told by the disks. One whose size nobody knows gives no answer before the stage
/// is cleared.
class Stage::Disks {
public:
    void set(const std::string& id, std::int64_t bytes) {
        const std::lock_guard lock(mutex_);
        sizes_[id] = bytes;
    }
    std::int64_t size(const std::string& id) const {
        std::unique_lock lock(mutex_);
        const auto known = sizes_.find(id);
        if (known != sizes_.end())
            return known->second;
        cleared_.wait(lock, [this] { return isCleared_; });
        return 0;
    }
    void clear() {
        const std::lock_guard lock(mutex_);
        isCleared_ = true;
        cleared_.notify_all();
    }

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable cleared_;
    std::map<std::string, std::int64_t> sizes_;
    bool isCleared_ = false;
};

Stage::Stage(QObject* parent) : QObject(parent), disks_(std::make_shared<Disks>()) {
    desk_.surroundings.findObstacle = [disks = disks_](const auto&) {
        disks->size("one that is silent");
        return std::optional<std::string>("nobody waits for this any more");
    };
    desk_.surroundings.measure = [disks = disks_](const auto& entry, const auto&) {
        return Measurement{disks->size(entry.id), 0, 0};
    };
    desk_.surroundings.now = [this] {
        return now_;
    };
    OffloadSettings settings = OffloadSettings::load(desk_.defaults);
    settings.outputFolderPath = "/home/dit/Documents/SlatewiseDIT";
    settings.ejectAfterSuccess = true;
    settings.save(desk_.defaults);
    desk_.start();
}

Stage::~Stage() {
    disks_->clear();
}

void Stage::add(const QString& name, VolumeKind kind, std::int64_t bytes, const QString& uuid) {
    auto& volume = desk_.volumes.emplace_back();
    volume.facts.volumeName = name.toStdString();
    volume.facts.mountPoint = kMounts + volume.facts.volumeName;
    volume.facts.deviceIdentifier = idOf(name).toStdString();
    volume.kind = kind;
    if (!uuid.isEmpty())
        volume.facts.volumeUUID = uuid.toStdString();
    if (kind == VolumeKind::Destination)
        volume.facts.freeBytes = bytes;
    if (bytes > 0)
        disks_->set(volume.id(), bytes);
    model()->volumes().apply();
}

void Stage::plugInCard(const QString& name, double bytes, const QString& uuid) {
    add(name, VolumeKind::CameraCard, static_cast<std::int64_t>(bytes), uuid);
}

void Stage::plugInFolder(const QString& name) {
    const auto card = name.toStdString();
    const auto id = desk_.mountCard(card, {}).toStdString();
    disks_->set(id, TreeWalker::copyableBytes(desk_.folder / card, {}));
    model()->volumes().apply();
}

void Stage::plugInDisk(const QString& name, double freeBytes) {
    add(name, VolumeKind::Destination, static_cast<std::int64_t>(freeBytes));
}

void Stage::plugInUnknown(const QString& name) {
    add(name, VolumeKind::Unknown, static_cast<std::int64_t>(kGB));
    moveToTop(name);
}

void Stage::moveToTop(const QString& name) {
    auto& volumes = desk_.volumes;
    const auto found = std::find_if(volumes.begin(), volumes.end(), [&](const auto& volume) {
        return volume.facts.volumeName == name.toStdString();
    });
    std::rotate(volumes.begin(), found, found + 1);
    model()->volumes().apply();
}

void Stage::pull(const QString& name) {
    desk_.unmount(idOf(name));
    model()->volumes().apply();
}

void Stage::pullAll() {
    desk_.volumes.clear();
    model()->volumes().apply();
}

void Stage::choose(const QString& card, const QString& unit) {
    auto& cards = *model()->cards();
    if (!model()->state().board.selection(VolumeSide::Card).contains(idOf(card).toStdString()))
        cards.toggle(idOf(card));
    cards.focus(idOf(card));
    if (!unit.isEmpty())
        model()->units()->tapUnit(unit);
}

void Stage::answerWith(const QString& name) {
    desk_.choice = desk_.folder / name.toStdString();
    std::filesystem::create_directories(*desk_.choice);
}

BatchPlan Stage::plan() {
    const auto& state = model()->state();
    return {.settings = state.settings,
            .language = state.language,
            .cards = state.board.selected(VolumeSide::Card),
            .destinations = state.board.selected(VolumeSide::Destination),
            .cameraByCardID = state.cardUnits.cameraByCardID,
            .ekipByCardID = state.cardUnits.ekipByCardID,
            .totalBytes = 0};
}

void Stage::begin() {
    pairBegan_ = now_;
    model()->batch()->batchBegan(plan());
    model()->batch()->pairBegan(plan().pairs().front());
}

void Stage::copying(double share) {
    constexpr int kFiles = 107;
    constexpr double kBytes = 118.2 * kGB;
    constexpr double kBytesPerSecond = 412.6e6;
    auto& batch = *model()->batch();
    if (!batch.isBusy()) {
        begin();
        batch.phaseChanged(CopyProgress(kFiles, kBytes).copying("", 0, now_));
    }
    using Seconds = std::chrono::duration<double>;
    now_ = pairBegan_ + std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                            Seconds(share * kBytes / kBytesPerSecond));
    CopyProgress progress(kFiles, kBytes);
    const double latest = std::min(share * kBytes, 2 * kBytesPerSecond);
    progress.add(static_cast<std::int64_t>(share * kBytes - latest),
                 now_ - std::chrono::seconds(3));
    progress.add(static_cast<std::int64_t>(latest), now_);
    const int file = std::min(static_cast<int>(share * kFiles), kFiles - 1);
    const auto name = fmt::format("CLIP/A001C{:03}_260301.mxf", file + 1);
    if (model()->settings()->verifyOnly())
        batch.phaseChanged(progress.hashing(name, file, now_));
    else
        batch.phaseChanged(progress.copying(name, file, now_));
}

void Stage::succeed(int notes) {
    BatchResult result;
    result.wasBegun = true;
    result.wasHashing = model()->settings()->verifyOnly();
    result.filesDone = 214;
    result.bytesDone = static_cast<std::int64_t>(182.3 * kGB);
    for (std::size_t pair = 0; pair < plan().pairs().size(); ++pair) {
        auto& each = result.pairs.emplace_back();
        each.status = result.wasHashing ? OutcomeStatus::Hashed : OutcomeStatus::Verified;
        each.filesDone = 107;
    }
    for (int note = 0; note < notes; ++note)
        result.pairs.front().problems.push_back(
            {OffloadProblem::Kind::LinkLeadsOut, "LINKS/" + std::to_string(note)});
    end(result);
}

void Stage::fail(int unreadFolders) {
    std::vector<OffloadProblem> problems;
    for (int folder = 1; folder <= unreadFolders; ++folder)
        problems.push_back({OffloadProblem::Kind::FolderNotRead, "CLIPS" + std::to_string(folder),
                            reasonOf(EIO, model()->state().l10n()), EIO});
    fail(std::move(problems));
}

void Stage::fail(std::vector<OffloadProblem> problems, PairFailure failure) {
    const auto l10n = model()->state().l10n();
    const auto pairs = plan().pairs();
    BatchResult result;
    result.wasBegun = true;
    result.wasHashing = model()->settings()->verifyOnly();
    result.pairs.resize(pairs.size());
    result.pairs.front() = {.status =
                                result.wasHashing ? OutcomeStatus::Hashed : OutcomeStatus::Verified,
                            .filesDone = 107};
    auto& failed = result.pairs.at(1);
    failed.failure = failure;
    const bool isOfReports =
        !problems.empty() && std::ranges::all_of(problems, &OffloadProblem::isOfReports);
    failed.runStatus = !isOfReports        ? OutcomeStatus::Failed
                       : result.wasHashing ? OutcomeStatus::Hashed
                                           : OutcomeStatus::Verified;
    failed.message = (result.wasHashing ? l10n.hashingIncomplete(pairs[1].name)
                                        : l10n.verifyIncomplete(pairs[1].name)) +
                     " " + std::string(l10n.cardLeftMounted());
    failed.problems = std::move(problems);
    result.message = failed.message;
    end(result);
}

void Stage::end(const BatchResult& result) {
    model()->batch()->batchBegan(plan());
    model()->batch()->batchEnded(result);
}

void Stage::play(const QString& scene) {
    playReady();
    if (scene == "history") {
        playHistory();
    } else if (scene == "sheet") {
        model()->settings()->addSkipName("MISC");
        model()->settings()->addSkipName("INDEX.DAT");
        model()->settings()->setPresented(true);
    }
}

void Stage::playCards() {
    model()->settings()->setProjectName("Uzak Kıyılar");
    plugInCard("A001", 118.2 * kGB);
    plugInCard("B004", 64.07 * kGB);
    plugInCard("SES_MIX_02", 0);
    plugInDisk("SHUTTLE_01", 3.12e12);
    plugInDisk("RAID Backup", 18.4e12);
    model()->destinations()->toggle(idOf("RAID Backup"));
    choose("A001", {});
    Desk::waitUntil([this] {
        const auto& sizes = model()->state().contentSizes;
        return sizes.usedBytes("dev-A001") && sizes.usedBytes("dev-B004");
    });
}

void Stage::playReady() {
    playCards();
    choose("B004", "CamB");
    choose("A001", "CamA");
}

void Stage::playHistory() {
    struct Past {
        const char* card;
        OutcomeStatus status;
        std::int64_t bytes;
        std::optional<CheckRecord> check;
    };
    const auto noon = Clock::fromIso8601("2026-03-01T09:30:00Z").value();
    const std::vector<Past> sessions = {
        {"C003", OutcomeStatus::Verified, 498'000'000'000, {}},
        {"B014", OutcomeStatus::Failed, 120'000'000'000, {}},
        {"S007", OutcomeStatus::Hashed, 0, {}},
        {"A002", OutcomeStatus::Verified, 256'000'000'000,
         CheckRecord{.checkedAt = noon, .filesEqual = 1, .differences = 1}},
        {"A001", OutcomeStatus::Verified, 512'000'000'000,
         CheckRecord{.checkedAt = noon, .filesEqual = 2}},
    };
    auto& database = *model()->state().database;
    auto day = noon;
    for (const auto& past : sessions) {
        OffloadOutcome outcome;
        outcome.sessionID = Uuid::random();
        outcome.sessionRoot = std::string(kMounts) + "SSD1/2026-03-01/Unit 1/CamA/" + past.card;
        outcome.status = past.status;
        outcome.files.resize(2);
        outcome.bytesCopied = past.bytes;
        outcome.startedAt = outcome.finishedAt = day;
        day -= std::chrono::hours(7);
        database.save(outcome, outcome.files, past.card, "SSD1", "CamA", {.ekip = "Unit 1"});
        if (past.check)
            database.recordCheck(outcome.sessionID.text(), *past.check);
    }
    model()->history()->setPresented(true);
}

} // namespace slatewise::test
