#pragma once

#include "Language/AppLanguage.h"
#include "Model/Copying/Notice.h"
#include "Model/History/PastOffload.h"
#include "Model/Surroundings.h"
#include "Model/Units/CardUnits.h"
#include "Model/Units/UnitCatalog.h"
#include "Model/Volumes/ContentSizes.h"
#include "Model/Volumes/VolumeBoard.h"
#include "Offload/FolderTemplate.h"
#include "Offload/OffloadSettings.h"
#include "Platform/Desktop/UserDefaults.h"
#include "Storage/AppDatabase.h"

#include <QObject>

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace slatewise {

class L10n;

/// What the application knows, shared by the objects that show it to views. Whoever changes
/// something calls `publish`; each object then compares what it shows with what is to be shown, and
/// signals only what differs. GUI thread.
class ModelState : public QObject {
    Q_OBJECT

public:
    /// Reads what is stored and opens the store.
    explicit ModelState(Surroundings around);

    const Surroundings surroundings;
    UserDefaults& defaults;
    AppLanguage language;
    OffloadSettings settings;
    UnitCatalog unitCatalog;
    const std::shared_ptr<AppDatabase> database;

    VolumeBoard board;
    CardUnits cardUnits;
    ContentSizes contentSizes;
    /// What is known of listed cards from earlier offloads, by their ids.
    std::map<std::string, PastOffload> pastOffloads;
    /// The unit that was tapped last, if it was for no card.
    std::string highlightedUnit;
    /// Why nothing came of what the user did last; empty when something did.
    std::optional<Notice> notice;
    /// The last press of the button came to nothing, for a reason that only a batch finds.
    bool wasRefused = false;
    /// The user has turned to what is next: how the last batch ended is no news any more.
    bool isVerdictOld = false;

    L10n l10n() const;
    void publish() { Q_EMIT changed(); }
    /// Puts aside how the last batch ended, and says what stands against the next one.
    void refuse(Notice why) {
        notice = std::move(why);
        isVerdictOld = true;
        publish();
    }
    /// The user has changed what a refusal may have been about, which would only mislead now.
    void dropRefusal() {
        notice.reset();
        isVerdictOld = isVerdictOld || wasRefused;
    }

    /// The card that a unit or a crew is given to.
    std::optional<std::string> targetCard() const {
        return board.selection(VolumeSide::Card).target();
    }
    std::string targetUnit() const;
    /// The unit that is highlighted and that an edit works on: the target card's, or the one tapped
    /// last where there is no card.
    std::string activeUnit() const;
    void giveCurrentCrewTo(const std::string& card);
    void giveTargetCurrentCrew();

    /// What the path of a copy is made of with what is selected now.
    FolderTemplate::Values templateValues() const;

Q_SIGNALS:
    void changed();
    /// The user is to look at that card.
    void cardWanted(const std::string& id);
};

} // namespace slatewise
