#pragma once

#include "Batch/ProgressTexts.h"
#include "Language/AppLanguage.h"
#include "Offload/OffloadProblem.h"
#include "Offload/OffloadSettings.h"
#include "Platform/Files/RootFolder.h"
#include "Service/SaaSProfile.h"
#include "Volumes/VolumeRecords.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace slatewise {

class L10n;

/// One card on its way to one destination.
struct BatchPair {
    ClassifiedVolume card;
    ClassifiedVolume destination;
    /// As people are told of it.
    std::string name;
    std::string camera;
    std::string ekip;
    /// Where the batch stands while this pair is at work.
    BatchPosition position;
    bool isLastOfCard = false;
    /// The two as the batch found them when it began, and the archive of its reports; empty before
    /// it has, or when it found none.
    std::shared_ptr<const RootFolder> cardFolder{};
    std::shared_ptr<const RootFolder> destinationFolder{};
    std::shared_ptr<const RootFolder> archiveFolder{};

    /// What is to be told of a card or a disk whose path does not lead to what was chosen; empty
    /// when both are in place. Asks the disks; any thread.
    std::optional<OffloadProblem> findMissingFolder() const;
};

/// "A001 → SSD1", of the names of a card and a disk.
std::string pairName(std::string_view card, std::string_view destination);

/// The same; where nothing is copied, the card alone.
std::string pairName(const ClassifiedVolume& card, const ClassifiedVolume& destination,
                     const OffloadSettings& settings);

/// What a batch is to do, as it stood when the user pressed the button. Nothing that is changed
/// later reaches a batch at work. A value.
struct BatchPlan {
    OffloadSettings settings;
    AppLanguage language = AppLanguage::English;
    std::vector<ClassifiedVolume> cards;
    std::vector<ClassifiedVolume> destinations;
    CardLabels cameraByCardID;
    CardLabels ekipByCardID;
    /// Of all cards together, as far as they are measured.
    std::int64_t totalBytes = 0;
    /// Empty while there is no reporting service.
    std::optional<SaaSProfile> serviceProfile{};

    L10n l10n() const;

    /// Every card to every destination, cards in the outer loop.
    std::vector<BatchPair> pairs() const;

    /// What the log says at the start.
    std::string logLine() const;
};

} // namespace slatewise
