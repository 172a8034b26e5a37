#include "Texts.h"

#include <fmt/format.h>

namespace slatewise::tool {

std::string Texts::noFolder(std::string_view path) const {
    return fmt::format(fmt::runtime(choose("{} is not a folder.", "{} bir klasör değil.")), path);
}

std::string Texts::namedTwice(std::string_view path) const {
    return fmt::format(fmt::runtime(choose("{} is given twice.", "{} iki kez verilmiş.")), path);
}

std::string Texts::cardAndDestination(std::string_view path) const {
    return fmt::format(
        fmt::runtime(choose("{} is both a card and a destination. --to takes one destination; "
                            "every word without an option is a card.",
                            "{} hem kart hem hedef. --to tek bir hedef alır; seçeneksiz her sözcük "
                            "bir karttır.")),
        path);
}

std::string Texts::doesNotAnswer(std::string_view path) const {
    return fmt::format(fmt::runtime(choose("{} does not answer.", "{} yanıt vermiyor.")), path);
}

std::string Texts::looksLikeDestination(std::string_view path) const {
    return fmt::format(
        fmt::runtime(choose("{0} is given as a card but has report sets, as a destination does. If "
                            "it is one, write --to {0}; if it is a card, {0}=CAMERA,CREW.",
                            "{0} kart olarak verilmiş ama bir hedef gibi rapor klasörleri var. "
                            "Hedefse --to {0}, kartsa {0}=KAMERA,EKİP yazın.")),
        path);
}

std::string Texts::emptyCard(std::string_view path) const {
    return fmt::format(fmt::runtime(choose("Note: {0} is empty, so there is nothing to copy. If "
                                           "its card is not mounted, mount it; if "
                                           "it is a destination, write --to {0}.",
                                           "Not: {0} boş; kopyalanacak bir şey yok. Kartı bağlı "
                                           "değilse bağlayın; hedefse --to {0} "
                                           "yazın.")),
                       path);
}

std::string Texts::emptyCardToHash(std::string_view path) const {
    return fmt::format(fmt::runtime(choose("Note: {} is empty, so there is nothing to hash. If its "
                                           "card is not mounted, mount it.",
                                           "Not: {} boş; hash alınacak bir şey yok. Kartı bağlı "
                                           "değilse bağlayın.")),
                       path);
}

std::string Texts::described(const Word& word) const {
    if (word.isNamed)
        return word.word;
    auto text = std::string(choose("not named", "belirtilmedi"));
    if (word.isInPath)
        text += fmt::format(fmt::runtime(choose(" ({} in the path)", " (yolda {})")), word.word);
    return text;
}

std::string Texts::wordsInUse(std::string_view card, const Word& camera, const Word& crew) const {
    return fmt::format(
        fmt::runtime(choose("{}: camera {}, crew {}. --camera and --crew name them.",
                            "{}: kamera {}, ekip {}. --camera ve --crew bunları belirler.")),
        card, described(camera), described(crew));
}

std::string Texts::ownWords(std::string_view card, const Word& camera, const Word& crew) const {
    return fmt::format(fmt::runtime(choose("Taken for the card {}: camera {}, crew {}.",
                                           "{} kart olarak alındı: kamera {}, ekip {}.")),
                       card, described(camera), described(crew));
}

std::string_view Texts::searching() const {
    return search_ == Search::Card ? shared.scanning() : shared.readingLists();
}

std::string Texts::copying(int number, int count) const {
    return fmt::format("{} {}/{}", choose("Copying", "Kopyalanıyor"), number, count);
}

std::string Texts::verifying(int number, int count) const {
    return fmt::format("{} {}/{}", choose("Verifying", "Doğrulanıyor"), number, count);
}

std::string Texts::hashing(int number, int count) const {
    return fmt::format("{} {}/{}", choose("Hashing", "Hash alınıyor"), number, count);
}

std::string_view Texts::stopping() const {
    return choose("Stopping… Ctrl-C again ends at once.",
                  "Durduruluyor… Yeniden Ctrl-C hemen bitirir.");
}

std::string_view Texts::notBegun() const {
    return choose("Not begun.", "Başlanmadı.");
}

std::string Texts::leftOnDestination(std::string_view sessionRoot, int filesProved) const {
    if (filesProved > 0) {
        return fmt::format(
            fmt::runtime(choose("What was copied until then stays, but only {} of its files are "
                                "verified: {}",
                                "O ana kadar kopyalananlar duruyor, ama yalnızca {} dosyası "
                                "doğrulandı: {}")),
            filesProved, sessionRoot);
    }
    return fmt::format(
        fmt::runtime(choose("What was copied until then stays, but is not verified: {}",
                            "O ana kadar kopyalananlar duruyor, ama doğrulanmadı: {}")),
        sessionRoot);
}

std::string_view Texts::reportsStillWait() const {
    return choose("The service has not taken every report; those wait and are sent at the next "
                  "start.",
                  "Servis bildirimlerin hepsini almadı; kalanlar bekliyor ve bir sonraki açılışta "
                  "gönderilecek.");
}

std::string Texts::moreProblems(std::size_t count) const {
    return fmt::format(
        fmt::runtime(choose("And {} more problems; the log and the reports have all.",
                            "{} sorun daha; tümü günlükte ve raporlarda.")),
        count);
}

std::string Texts::moreNotes(std::size_t count) const {
    return fmt::format(fmt::runtime(choose("And {} more notes; the log and the reports have all.",
                                           "{} not daha; tümü günlükte ve raporlarda.")),
                       count);
}

std::string_view Texts::advice(std::optional<OffloadProblem::Kind> kind) const {
    using Kind = OffloadProblem::Kind;
    switch (kind.value_or(Kind::CopyStopped)) {
    case Kind::ReportsNotAwaited:
        return choose("Keep the card and start again; the copy goes to a new folder.",
                      "Kartı saklayıp yeniden başlatın; kopya yeni bir klasöre gider.");
    case Kind::CardGone:
    case Kind::DiskReplaced:
        return choose("Connect it again and start once more; the copy goes to a new folder.",
                      "Yeniden bağlayıp bir daha başlatın; kopya yeni bir klasöre gider.");
    case Kind::CopyDiffers:
    case Kind::NameNotKept:
    case Kind::NotReadBack:
    case Kind::NothingReadBack:
        return choose("Keep the card, do not trust this disk, and offload again to another one.",
                      "Kartı saklayın, bu diske güvenmeyin ve başka bir diske yeniden alın.");
    case Kind::CardDiffersFromList:
    case Kind::ListedFileMissing:
    case Kind::ListedFileUnproved:
        return shared.adviceListDiffers();
    case Kind::ReportsNotArchived:
    case Kind::ReportsNotCopied:
    case Kind::PagesNotWritten:
    case Kind::ReportsOutdated:
        return choose(
            "The copy itself is complete. Mend the cause and offload again for a full set.",
            "Kopyanın kendisi tamam. Raporların tamamı için nedeni giderip yeniden alın.");
    default:
        return choose("Keep the card, mend the cause and start again; the copy goes to a new "
                      "folder.",
                      "Kartı saklayın, nedeni giderip yeniden başlatın; kopya yeni bir klasöre "
                      "gider.");
    }
}

std::string_view Texts::hashingAdvice(std::optional<OffloadProblem::Kind> kind) const {
    using Kind = OffloadProblem::Kind;
    switch (kind.value_or(Kind::HashingStopped)) {
    case Kind::ReportsNotAwaited:
        return choose("Keep the card and start again.", "Kartı saklayıp yeniden başlatın.");
    case Kind::CardGone:
    case Kind::DiskReplaced:
        return choose("Connect it again and start once more.",
                      "Yeniden bağlayıp bir daha başlatın.");
    case Kind::CardDiffersFromList:
    case Kind::ListedFileMissing:
    case Kind::ListedFileUnproved:
        return shared.adviceListDiffers();
    case Kind::ReportsNotArchived:
    case Kind::ReportsNotCopied:
    case Kind::PagesNotWritten:
    case Kind::ReportsOutdated:
        return choose(
            "Everything was hashed. Mend the cause and hash again for a full set.",
            "Hepsinin hash’i alındı. Raporların tamamı için nedeni giderip yeniden alın.");
    default:
        return choose("Keep the card, mend the cause and start again.",
                      "Kartı saklayın, nedeni giderip yeniden başlatın.");
    }
}

} // namespace slatewise::tool
