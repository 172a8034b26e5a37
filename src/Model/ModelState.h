#pragma once

#include "Language/L10n.h"
#include "Model/CardUnits.h"
#include "Model/ContentSizes.h"
#include "Model/Surroundings.h"
#include "Model/UnitCatalog.h"
#include "Model/VolumeBoard.h"
#include "Offload/FolderTemplate.h"
#include "Offload/OffloadSettings.h"
#include "Platform/Desktop/UserDefaults.h"
#include "Storage/AppDatabase.h"

#include <QObject>

#include <memory>
#include <string>

namespace slatewise {

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
    /// The unit that was tapped last.
    std::string highlightedUnit;

    L10n l10n() const { return L10n(language); }
    void publish() { Q_EMIT changed(); }

    /// The card that a unit or a crew is given to.
    std::optional<std::string> targetCard() const {
        return board.selection(VolumeSide::Card).target();
    }
    std::string targetUnit() const;
    /// The unit that an edit works on: the target card's, else the one tapped last.
    std::string activeUnit() const;
    void giveCurrentCrewTo(const std::string& card);
    void giveTargetCurrentCrew();

    /// What the path of a copy is made of with what is selected now.
    FolderTemplate::Values templateValues() const;

Q_SIGNALS:
    void changed();
};

} // namespace slatewise
