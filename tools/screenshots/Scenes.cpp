#include "Scenes.h"

#include "Language/L10n.h"
#include "Model/QtText.h"
#include "Offload/OffloadError.h"
#include "Offload/TreeWalker.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QQuickItem>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <utility>
#include <vector>

namespace slatewise::test {

namespace {

using Kind = OffloadProblem::Kind;

constexpr double kGB = 1e9;

void click(QQuickWindow& window, const char* name) {
    for (auto* button : window.findChildren<QObject*>(name))
        QMetaObject::invokeMethod(button, "clicked");
}

void pointAt(QQuickWindow& window, const char* name) {
    const auto* item = window.findChild<QQuickItem*>(name);
    const auto place = item->mapToScene({item->width() / 2, item->height() / 2});
    QMouseEvent moved(QEvent::MouseMove, place, window.mapToGlobal(place), Qt::NoButton,
                      Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &moved);
}

/// The control on which Tab stops last is the lowest.
void scrollTo(QQuickWindow& window, const char* name) {
    for (auto* item : window.findChildren<QQuickItem*>(name))
        item->forceActiveFocus(Qt::TabFocusReason);
}

void playNeedsUnit(Stage& stage) {
    stage.playReady();
    stage.plugInCard("C002", 64 * kGB);
    stage.choose("C002", {});
    stage.model()->batch()->start();
}

void playCrowded(Stage& stage) {
    stage.playReady();
    for (int card = 0; card < 9; ++card) {
        const auto name = "A very long card name that nobody asked for " + QString::number(card);
        stage.plugInCard(name, 512.1 * kGB);
        stage.choose(name, card % 2 == 0 ? "Steadicam Operator" : "");
    }
    for (const auto* unit : {"Underwater", "Crash Cam", "Witness"}) {
        stage.model()->units()->setNewUnitName(unit);
        stage.model()->units()->addUnit();
    }
    stage.model()->settings()->setProjectName(
        "A production whose name does not fit into any header that was ever drawn");
    stage.model()->batch()->start();
}

void playHashed(Stage& stage) {
    stage.playReady();
    stage.model()->settings()->setVerifyOnly(true);
    stage.succeed();
}

/// While the card is read, and nothing is copied.
void playHashing(Stage& stage) {
    stage.playReady();
    stage.model()->settings()->setVerifyOnly(true);
    stage.copying(0.4);
}

void playVerdictOfBefore(Stage& stage) {
    stage.playReady();
    stage.succeed();
    stage.choose("A001", "CamA");
}

/// A disk is too small for what is ticked now.
void playRefused(Stage& stage) {
    playVerdictOfBefore(stage);
    BatchResult refusal;
    const auto l10n = stage.model()->state().l10n();
    refusal.message = OffloadError(OffloadError::InsufficientSpace{
                                       19'400'000'000'000, 18'400'000'000'000, "RAID Backup"})
                          .text(l10n) +
                      " " + std::string(l10n.adviceMakeRoom());
    stage.model()->batch()->batchEnded(refusal);
}

void rememberOffload(Stage& stage, const std::string& card, const std::string& uuid) {
    OffloadOutcome outcome;
    outcome.status = OutcomeStatus::Verified;
    outcome.startedAt = outcome.finishedAt = Clock::fromIso8601("2026-03-01T09:30:00Z").value();
    const auto folder = stage.desk().folder / card;
    if (std::filesystem::exists(folder)) {
        for (const auto& entry : TreeWalker::walk(RootFolder(folder), {})) {
            outcome.files.push_back(makeRow(entry, RowAction::Copy, VerifyStatus::Verified));
            outcome.bytesCopied += entry.sizeBytes;
        }
    }
    for (const auto* disk : {"SHUTTLE_01", "RAID Backup"}) {
        outcome.sessionID = Uuid::random();
        stage.model()->state().database->save(outcome, outcome.files, card, disk, "CamA",
                                              {.ekip = "Ekip1", .cardUUID = uuid});
    }
}

/// The store knows earlier offloads of two cards, of which one has been shot on since.
void playSeenBefore(Stage& stage) {
    writeFile(stage.desk().folder / "A008/A008C001_260301.mxf", "a clip");
    rememberOffload(stage, "A008", "");
    rememberOffload(stage, "A009", "1A2B-3C4D");
    stage.playReady();
    stage.plugInFolder("A008");
    stage.plugInCard("A009", 118.2 * kGB, "1A2B-3C4D");
    Desk::waitUntil([&] {
        const auto& rows = stage.model()->cards()->rows();
        return rows.back().past.contains("RAID") && rows[rows.size() - 2].past.contains("RAID");
    });
}

/// A folder is picked as a destination on which no disk is mounted.
void playBare(Stage& stage) {
    stage.playReady();
    stage.answerWith("NAS_RUSHES");
    stage.model()->destinations()->pickFolder();
    Desk::waitUntil([&] { return stage.model()->destinations()->count() == 3; });
}

void playCardAsDestination(Stage& stage) {
    stage.playReady();
    stage.plugInFolder("C001");
    stage.answerWith("C001");
    stage.model()->destinations()->pickFolder();
    Desk::waitUntil([&] { return stage.model()->batch()->isRefused(); });
}

std::function<void(Stage&)> failing(Kind kind, const std::string& subject, int code = 0) {
    return [=](Stage& stage) {
        stage.playReady();
        const auto words = stage.model()->state().l10n();
        stage.fail({{kind, subject, code == 0 ? "" : reasonOf(code, words), code}},
                   PairFailure::Other);
    };
}

/// Whoever stopped a copy is not told that it did not go on.
void playStopped(Stage& stage) {
    stage.playReady();
    stage.fail(std::vector<OffloadProblem>(), PairFailure::Stopped);
}

/// The same where nothing was to be copied, at the second card.
void playHashingStopped(Stage& stage) {
    stage.playReady();
    stage.model()->destinations()->toggle("dev-RAID Backup");
    stage.model()->settings()->setVerifyOnly(true);
    stage.fail(std::vector<OffloadProblem>(), PairFailure::Stopped);
}

using Ends = std::vector<CardEnd>;

/// All went well, and this became of the cards.
std::function<void(Stage&)> ejecting(const std::function<Ends(L10n)>& ends) {
    return [=](Stage& stage) {
        stage.playReady();
        stage.succeed();
        auto& batch = *stage.model()->batch();
        auto result = *batch.lastResult();
        result.ejects = ends(stage.model()->state().l10n());
        batch.batchEnded(result);
    };
}

void playPast(Stage& stage) {
    stage.playReady();
    stage.playHistory();
    Desk::waitUntil([&] { return !stage.model()->history()->rows().empty(); });
}

void playCheck(Stage& stage) {
    playPast(stage);
    auto& history = *stage.model()->history();
    history.choose(history.rows().front().sessionID);
    history.verifyAgain();
}

/// Scenes by their names.
class Scenes {
public:
    void add(std::string name, std::function<void(Stage&)> play,
             std::function<void(QQuickWindow&)> act = {}) {
        scenes_.push_back({std::move(name), {}, std::move(play), std::move(act)});
    }
    void addPrepared(std::string name, std::function<void(Stage&)> prepare,
                     std::function<void(Stage&)> play) {
        scenes_.push_back({std::move(name), std::move(prepare), std::move(play)});
    }
    std::vector<Scene> take() { return std::move(scenes_); }

private:
    std::vector<Scene> scenes_;
};

void ready(Stage& stage) {
    stage.playReady();
}

/// Up to the end of a batch.
void addBatches(Scenes& scenes) {
    const auto leftHalfDone = [](Stage& stage) {
        UnfinishedOffload{"A001", "SHUTTLE_01", "/media/dit/SHUTTLE_01/2026-03-01/Ekip1/CamA/A001"}
            .save(stage.desk().defaults);
        stage.desk().start();
    };
    const auto withoutDisks = [](Stage& stage) {
        stage.desk().surroundings.isBare = [](const auto&) {
            return true;
        };
        stage.desk().start();
    };
    scenes.add("empty", {});
    scenes.add("cards", [](Stage& stage) { stage.playCards(); });
    scenes.add("ready", ready);
    scenes.add("needsUnit", playNeedsUnit);
    scenes.add("seenBefore", playSeenBefore);
    scenes.add("hashOnly", [](Stage& stage) {
        stage.playReady();
        stage.model()->settings()->setVerifyOnly(true);
    });
    scenes.addPrepared("cutOff", leftHalfDone, ready);
    scenes.addPrepared("bare", withoutDisks, playBare);
    scenes.add("cardAsDestination", playCardAsDestination);
    scenes.add("busy", [](Stage& stage) {
        stage.playReady();
        stage.copying(0.86);
    });
    scenes.add("hashing", playHashing);
    scenes.add("crowded", playCrowded);
    scenes.add("hint", playCrowded, [](QQuickWindow& window) { pointAt(window, "projectName"); });
}

void addGoodEnds(Scenes& scenes) {
    scenes.add("success", [](Stage& stage) {
        stage.playReady();
        stage.succeed();
    });
    scenes.add("successWithNotes", [](Stage& stage) {
        stage.playReady();
        stage.succeed(2);
    });
    scenes.add("safeToPull", ejecting([](L10n words) {
                   return Ends{{words.safeToPull("A001"), true}, {words.safeToPull("B004"), true}};
               }));
    scenes.add("doNotPull", ejecting([](L10n words) {
                   return Ends{{words.unmountedButInUse("A001")},
                               {words.notEjected("B004", words.volumeIsBusy())}};
               }));
    scenes.add("hashed", playHashed);
    scenes.add("verdictOfBefore", playVerdictOfBefore);
    scenes.add("refused", playRefused);
}

void addFailures(Scenes& scenes) {
    const auto* const clip = "CLIP/A001C092_260301.mxf";
    const auto failedWidely = [](Stage& stage) {
        stage.playReady();
        stage.fail(7);
    };
    scenes.add("failed", failing(Kind::FolderNotRead, "CLIPS001", EIO));
    scenes.add("cardGone", failing(Kind::CardGone, "A001"));
    scenes.add("diskGone", failing(Kind::DiskReplaced, "RAID Backup"));
    scenes.add("fileNotRead", failing(Kind::CopyStopped, clip, EIO));
    scenes.add("diskFull", failing(Kind::CopyStopped, clip, ENOSPC));
    scenes.add("copyDiffers", failing(Kind::CopyDiffers, clip));
    scenes.add("reportsNotCopied", failing(Kind::ReportsNotCopied, "RAID Backup", EROFS));
    scenes.add("stopped", playStopped);
    scenes.add("hashingStopped", playHashingStopped);
    scenes.add("manyProblems", failedWidely);
    scenes.add("outcome", failedWidely, [](QQuickWindow& window) { click(window, "showOutcome"); });
}

void addSheets(Scenes& scenes) {
    const auto sheet = [](Stage& stage) {
        stage.play("sheet");
    };
    scenes.add("sheet", sheet);
    scenes.add("sheetEnd", sheet, [](QQuickWindow& window) { scrollTo(window, "showReports"); });
    scenes.add("editor", sheet, [](QQuickWindow& window) { click(window, "edit"); });
    scenes.add("objection", sheet, [](QQuickWindow& window) {
        click(window, "edit");
        window.findChild<QQuickItem*>("suffix")->setProperty("text", "{Dest}/../{CardName}");
    });
    scenes.add("history", [](Stage& stage) { stage.play("history"); });
    scenes.add("nothingFound", [](Stage& stage) {
        playPast(stage);
        stage.model()->history()->setSearch("Z999");
    });
    scenes.add("check", playCheck);
    scenes.add("volumes", [](Stage& stage) {
        stage.playReady();
        stage.plugInUnknown("SAS_01");
        stage.model()->otherVolumes()->setPresented(true);
    });
}

std::vector<Scene> allScenes() {
    Scenes scenes;
    addBatches(scenes);
    addGoodEnds(scenes);
    addFailures(scenes);
    addSheets(scenes);
    return scenes.take();
}

} // namespace

const Scene& sceneOf(const std::string& name) {
    static const auto scenes = allScenes();
    const auto found = std::find_if(scenes.begin(), scenes.end(),
                                    [&](const auto& scene) { return scene.name == name; });
    if (found == scenes.end())
        throw std::invalid_argument("no such scene: " + name);
    return *found;
}

} // namespace slatewise::test
