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
    stage.begin();
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
    refusal.message = OffloadError(OffloadError::InsufficientSpace{119'400'000'000, 64'000'000'000,
                                                                   "RAID Backup"})
                          .text(stage.model()->state().l10n());
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

void playCheck(Stage& stage) {
    stage.playReady();
    stage.playHistory();
    auto& history = *stage.model()->history();
    Desk::waitUntil([&] { return !history.rows().empty(); });
    history.choose(history.rows().front().sessionID);
    history.verifyAgain();
}

std::vector<Scene> allScenes() {
    const auto ready = [](Stage& stage) {
        stage.playReady();
    };
    const auto sheet = [](Stage& stage) {
        stage.play("sheet");
    };
    const auto failedWidely = [](Stage& stage) {
        stage.playReady();
        stage.fail(7);
    };
    const auto leftHalfDone = [](Stage& stage) {
        UnfinishedOffload{"A001", "SHUTTLE_01", "/media/dit/SHUTTLE_01/2026-03-01/Ekip1/CamA/A001"}
            .save(stage.desk().defaults);
        stage.desk().start();
    };
    std::vector<Scene> scenes;
    const auto add = [&](std::string name, std::function<void(Stage&)> play,
                         std::function<void(QQuickWindow&)> act = {}) {
        scenes.push_back({std::move(name), {}, std::move(play), std::move(act)});
    };
    add("empty", {});
    add("cards", [](Stage& stage) { stage.playCards(); });
    add("ready", ready);
    add("needsUnit", playNeedsUnit);
    add("seenBefore", playSeenBefore);
    add("hashOnly", [](Stage& stage) {
        stage.playReady();
        stage.model()->settings()->setVerifyOnly(true);
    });
    add("busy", [](Stage& stage) {
        stage.playReady();
        stage.copying(0.86);
    });
    add("success", [](Stage& stage) {
        stage.playReady();
        stage.succeed();
    });
    add("successWithNotes", [](Stage& stage) {
        stage.playReady();
        stage.succeed(2);
    });
    add("cardAsDestination", playCardAsDestination);
    add("hashing", playHashing);
    add("hashed", playHashed);
    add("verdictOfBefore", playVerdictOfBefore);
    add("refused", playRefused);
    add("failed", failing(Kind::FolderNotRead, "CLIPS001", EIO));
    add("cardGone", failing(Kind::CardGone, "A001"));
    add("diskFull", failing(Kind::CopyStopped, "CLIP/A001C092_260301.mxf", ENOSPC));
    add("copyDiffers", failing(Kind::CopyDiffers, "CLIP/A001C092_260301.mxf"));
    add("stopped", playStopped);
    add("manyProblems", failedWidely);
    add("outcome", failedWidely, [](QQuickWindow& window) { click(window, "showOutcome"); });
    add("crowded", playCrowded);
    add("hint", playCrowded, [](QQuickWindow& window) { pointAt(window, "projectName"); });
    add("sheet", sheet);
    add("sheetEnd", sheet, [](QQuickWindow& window) { scrollTo(window, "showReports"); });
    add("editor", sheet, [](QQuickWindow& window) { click(window, "edit"); });
    add("history", [](Stage& stage) { stage.play("history"); });
    add("check", playCheck);
    add("volumes", [](Stage& stage) {
        stage.playReady();
        stage.plugInUnknown("SAS_01");
        stage.model()->otherVolumes()->setPresented(true);
    });
    scenes.push_back({"cutOff", leftHalfDone, ready});
    const auto withoutDisks = [](Stage& stage) {
        stage.desk().surroundings.isBare = [](const auto&) {
            return true;
        };
        stage.desk().start();
    };
    scenes.push_back({"bare", withoutDisks, playBare});
    return scenes;
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
