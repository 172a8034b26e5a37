#pragma once

#include "Arguments.h"
#include "Texts.h"

#include "Volumes/VolumeRecords.h"

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace slatewise::tool {

/// A card or a destination of the command line, as it was found.
struct NamedFolder {
    /// A picked folder, its path absolute and without links, dots or a slash at its end: the last
    /// part is the name that reports show. Where nothing was found it has path and name alone.
    ClassifiedVolume volume;
    /// Of a card, where the command line names them for it alone.
    std::string camera{};
    std::string crew{};
    /// It was named as CARD=CAMERA,CREW, which is nothing but a card.
    bool isSurelyCard = false;

    bool hasOwnWords() const { return !camera.empty() || !crew.empty(); }

    /// Why it cannot be used: it is gone, or does not answer.
    std::optional<std::string> obstacle{};
    /// To all appearance it was there, and connecting it again may mend that.
    bool isGone = false;
    /// It is something else than a folder, which no plugging in mends.
    bool isNoFolder = false;
    /// Nothing lies in it but what file systems and desktops put there.
    bool isEmpty = false;
    /// There are report sets in it, as on a disk that cards were copied to.
    bool hasReportSets = false;
};

struct NamedFolders {
    std::vector<NamedFolder> cards;
    std::vector<NamedFolder> destinations;

    /// What makes no sense however the disks behave: a file, a folder that is named twice, a card
    /// that is a destination too.
    std::optional<std::string> misuse(const Texts& texts) const;

    /// A card that is to all appearance a destination without its "--to".
    std::optional<std::string> misplacedDestination(const Texts& texts) const;
};

/// Looks at everything that the command line names, at each on a thread of its own: one that does
/// not answer within seconds holds up none of the others and is left to itself. Ends at once, with
/// what is known by then, when `stop` asks for it.
NamedFolders lookAt(const Arguments& arguments, const Texts& texts, const std::stop_token& stop);

} // namespace slatewise::tool
