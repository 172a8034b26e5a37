#include "Language/L10n.h"

#include "Language/Said.h"
#include "Platform/Desktop/UserDefaults.h"

#include <fmt/format.h>

namespace slatewise {

L10n L10n::current() {
    return L10n(Language::load(UserDefaults::standard()));
}

namespace {

std::string atWork(std::string_view deed, int done, int total, std::string_view file,
                   std::string_view speed) {
    return fmt::format("{} {} / {}  ·  {}  ·  {}", deed, done, total, file, speed);
}

} // namespace

std::string L10n::copying(int done, int total, Text file, Text speed) const {
    return atWork(text("Copying", "Kopyalanıyor"), done, total, file, speed);
}

std::string L10n::verifying(int done, int total, Text file, Text speed) const {
    return atWork(text("Verifying", "Doğrulanıyor"), done, total, file, speed);
}

std::string L10n::hashing(int done, int total, Text file, Text speed) const {
    return atWork(text("Hashing", "Hash alınıyor"), done, total, file, speed);
}

std::string L10n::verified(int files, Text size) const {
    return fmt::format("{} — {} {}, {}", text("Verified", "Doğrulandı"), files,
                       text("files", "dosya"), size);
}

std::string L10n::hashed(int files) const {
    return said(isTurkish(), "Hashed — {} files (not copied)",
                "Hash alındı — {} dosya (kopyalanmadı)", files);
}

std::string L10n::failed(Text message) const {
    return fmt::format("{}: {}", text("Failed", "Başarısız"), message);
}

std::string L10n::verifiedOnDisks(int files, int disks, Text size) const {
    return isTurkish() ? fmt::format("Doğrulandı — {} diske {} dosya, {}", disks, files, size)
                       : fmt::format("Verified — {} files to {} disks, {}", files, disks, size);
}

std::string L10n::timeLeft(Text time) const {
    return said(isTurkish(), "{} left", "{} kaldı", time);
}

std::string L10n::bytesOf(Text done, Text total) const {
    return fmt::format("{} / {}", done, total);
}

std::string L10n::extraCards(int count) const {
    return fmt::format("+{} {}", count, text("cards", "kart"));
}

std::string L10n::extraDestinations(int count) const {
    return fmt::format("+{} {}", count, text("destinations", "hedef"));
}

std::string L10n::batchCard(int number, int count) const {
    return fmt::format("{} {}/{}", text("Card", "Kart"), number, count);
}

std::string L10n::batchDestination(int number, int count) const {
    return fmt::format("{} {}/{}", text("Destination", "Hedef"), number, count);
}

std::string L10n::verifyIncomplete(Text pair) const {
    return said(isTurkish(), "Verification did not finish ({}).", "Doğrulama tamamlanamadı ({}).",
                pair);
}

std::string L10n::hashingIncomplete(Text card) const {
    return said(isTurkish(), "Hashing did not finish ({}).", "Hash alma tamamlanamadı ({}).", card);
}

std::string L10n::pairVerified(Text pair, int files) const {
    return said(isTurkish(), "{}: verified, {} files", "{}: doğrulandı, {} dosya", pair, files);
}

std::string L10n::pairHashed(Text card, int files) const {
    return said(isTurkish(), "{}: hashed, {} files", "{}: hash alındı, {} dosya", card, files);
}

std::string L10n::pairFailed(Text pair, Text why) const {
    return fmt::format("{}: {}{}{}", pair, text("FAILED", "BAŞARISIZ"), why.empty() ? "" : " · ",
                       why);
}

std::string L10n::lastVerified(int files, bool hasNotes, Text time) const {
    const auto notes = hasNotes ? withNotes() : Text();
    return said(isTurkish(), "Last offload: verified{}, {} files, {}",
                "Son kopya: doğrulandı{}, {} dosya, {}", notes, files, time);
}

std::string L10n::lastHashed(int files, bool hasNotes, Text time) const {
    const auto notes = hasNotes ? withNotes() : Text();
    return said(isTurkish(), "Last offload: only hashed{}, {} files, {}",
                "Son işlem: yalnızca hash{}, {} dosya, {}", notes, files, time);
}

std::string L10n::lastFailed(Text time) const {
    return said(isTurkish(), "Last offload: FAILED, {}", "Son işlem: BAŞARISIZ, {}", time);
}

std::string L10n::offloadedBefore(Text date, Text disks) const {
    return said(isTurkish(), "Offloaded {} → {}", "Kopyalandı: {} → {}", date, disks);
}

std::string L10n::offloadedAndChanged(Text date, Text disks) const {
    // The word that matters comes first, and the disks last: they are what a narrow row may cut.
    return said(isTurkish(), "Differs from offload of {} → {}",
                "İçeriği farklı, son kopya: {} → {}", date, disks);
}

std::string L10n::lastCutOff(Text card, Text destination, Text folder) const {
    auto line = said(isTurkish(), "The last offload was cut off: {} → {}. Do not wipe the card.",
                     "Son kopya yarıda kaldı: {} → {}. Kartı silmeyin.", card, destination);
    if (!folder.empty())
        line += fmt::format(
            fmt::runtime(text(" An unfinished copy lies in {}", " Yarım kalan kopya: {}")), folder);
    return line;
}

std::string L10n::unitFor(Text card) const {
    return said(isTurkish(), "Unit for {}", "{} için birim", card);
}

std::string L10n::cardHasNoUnit(Text card) const {
    return said(isTurkish(), "{} has no unit yet", "{} kartının birimi henüz yok", card);
}

std::string L10n::cardIsNoDestination(Text card) const {
    return said(isTurkish(), "{} is listed as a card, so it cannot be a destination",
                "{} kart olarak listede; hedef olamaz", card);
}

std::string L10n::sizeMismatch(Text source, Text copy) const {
    return said(isTurkish(), "Size mismatch (source {}, copy {}).",
                "Boyut uyuşmadı (kaynak {}, kopya {}).", source, copy);
}

std::string L10n::endedEarly(Text size, Text read) const {
    return isTurkish() ? fmt::format("{} baytlık dosya {} bayttan sonra bitti.", size, read)
                       : fmt::format("It ended after {} of {} bytes.", read, size);
}

std::string L10n::insufficientSpace(Text needed, Text free, Text disk) const {
    const auto* const gap = disk.empty() ? "" : " ";
    return isTurkish() ? fmt::format("Hedefte yer yok{}{} (gerekli {}, boş {}).",
                                     disk.empty() ? "" : ": ", disk, needed, free)
                       : fmt::format("Not enough space on the destination{}{} (need {}, {} free).",
                                     gap, disk, needed, free);
}

std::string L10n::systemError(int code) const {
    return fmt::format("{} {}", text("system error", "sistem hatası"), code);
}

std::string L10n::ejectFailed(Text name) const {
    return said(isTurkish(), "Could not eject {}.", "Çıkarma başarısız: {}", name);
}

std::string L10n::safeToPull(Text name) const {
    return said(isTurkish(), "{} is unmounted, safe to pull.", "{} ayrıldı, güvenle çekilebilir.",
                name);
}

std::string L10n::unmountedButInUse(Text name) const {
    return said(isTurkish(),
                "{} is unmounted, but another volume of the same disk or housing is in use: do not "
                "pull it.",
                "{} ayrıldı, ama aynı diskin ya da kutunun başka bir bölümü kullanımda: çekmeyin.",
                name);
}

std::string L10n::notEjected(Text name, Text reason) const {
    return said(isTurkish(), "{} was not ejected: {}", "{} çıkarılmadı: {}", name, reason);
}

std::string L10n::ejectInDoubt(Text name) const {
    return said(isTurkish(),
                "{} may or may not be ejected yet: stopped while it was being ejected.",
                "{} çıkarılmış olabilir ya da olmayabilir: çıkarma sürerken durduruldu.", name);
}

std::string L10n::fileCount(int count) const {
    return fmt::format("{} {}", count, text("files", "dosya"));
}

std::string L10n::folderCount(int count) const {
    return fmt::format("{} {}", count, text("folders", "klasör"));
}

std::string L10n::reportCounts(int copied, int skipped, int failed) const {
    return fmt::format("{} {}, {} {}, {} {}", copied, text("copied", "kopyalandı"), skipped,
                       text("skipped", "atlandı"), failed, text("failed", "hata"));
}

std::string L10n::reportHashedCounts(int hashed, int skipped, int failed) const {
    return fmt::format("{} {}, {} {}, {} {}", hashed, text("hashed", "hash alındı"), skipped,
                       text("skipped", "atlandı"), failed, text("failed", "hata"));
}

std::string L10n::reportUnproved(int files) const {
    return fmt::format("{} {}", files,
                       text("copied but not verified", "kopyalandı ama doğrulanmadı"));
}

std::string L10n::reportMoreProblems(int count, int page) const {
    if (count == 0)
        return said(isTurkish(), "in full on page {}", "tamamı {}. sayfada", page);
    return said(isTurkish(), "and {} more; all from page {}",
                "ve {} tane daha; tümü {}. sayfadan başlayarak", count, page);
}

std::string L10n::destinationInsideCard(Text destination, Text card) const {
    return said(isTurkish(), "The destination {} lies on the card {}. Choose one outside the card.",
                "Hedef {} kartın içinde ({}). Kartın dışında bir hedef seçin.", destination, card);
}

std::string L10n::sameDestination(Text one, Text other) const {
    return said(isTurkish(),
                "{} and {} are the same folder. Choose another disk for the second copy.",
                "{} ve {} aynı klasör. İkinci kopya için başka bir disk seçin.", one, other);
}

std::string L10n::archiveInsideCard(Text archive, Text card) const {
    return said(isTurkish(),
                "The archive of reports {} lies on the card {}. Choose a place outside the card.",
                "Rapor arşivi {} kartın içinde ({}). Kartın dışında bir yer seçin.", archive, card);
}

std::string L10n::checkFoundAllEqual(Text date, int files) const {
    if (files == 1)
        return said(isTurkish(), "Checked {}: the only file is there and the same",
                    "Denetim, {}: tek dosya yerinde ve aynı", date);
    return said(isTurkish(), "Checked {}: all {} files are there and the same",
                "Denetim, {}: {} dosyanın hepsi yerinde ve aynı", date, files);
}

std::string L10n::checkFoundDifferences(Text date, int differences) const {
    if (isTurkish())
        return fmt::format("Denetim, {}: {} FARK", date, differences);
    return fmt::format("Checked {}: {} {}", date, differences,
                       differences == 1 ? "DIFFERENCE" : "DIFFERENCES");
}

std::string L10n::checkFailed(Text date, Text reason) const {
    return said(isTurkish(), "Check, {}: could not be done: {}", "Denetim, {}: yapılamadı: {}",
                date, reason);
}

std::string L10n::checkNotStored(Text reason) const {
    return said(isTurkish(), "This check could not be written into the history: {}",
                "Bu denetim geçmişe yazılamadı: {}", reason);
}

std::string L10n::onlyLatestShown(std::size_t sessions) const {
    return said(isTurkish(), "Only the latest {} are shown; search for others.",
                "Yalnızca son {} oturum gösteriliyor; ötekiler için arayın.", sessions);
}

std::string L10n::templateLeadsOut(Text pathTemplate) const {
    return said(isTurkish(),
                "The folder template leads out of the destination or to its reports: {}",
                "Klasör şablonu hedefin dışına ya da raporlarına çıkıyor: {}", pathTemplate);
}

std::string L10n::cannotStart(Text reason) const {
    return fmt::format("{}: {}", text("Slatewise DIT cannot start", "Slatewise DIT başlatılamıyor"),
                       reason);
}

std::string L10n::cardInsideSession(Text card, Text session) const {
    return said(
        isTurkish(),
        "The card {} lies in the folder that its copy would go to ({}). Choose another destination "
        "or template.",
        "{} kartı, kopyanın yazılacağı klasörün içinde ({}). Başka bir hedef veya şablon seçin.",
        card, session);
}

std::string L10n::connected(Text account, Text address) const {
    return fmt::format("{}: {} → {}", text("Service", "Servis"), account, address);
}

std::string L10n::standalone() const {
    return std::string(
        text("Standalone, without reporting service", "Bağımsız, raporlama servisi yok"));
}

std::string L10n::profileIgnored(Text file, Text reason) const {
    return said(isTurkish(), "{} is ignored: {}", "{} kullanılmıyor: {}", file, reason);
}

std::string L10n::profileOpenToOthers(Text path) const {
    return said(isTurkish(), "others can get at it; to mend that: chmod 600 \"{}\"",
                "başkaları erişebiliyor; düzeltmek için: chmod 600 \"{}\"", path);
}

std::string L10n::profileLacksText(Text key) const {
    return said(isTurkish(), "\"{}\" is not text", "\"{}\" bir metin değil", key);
}

} // namespace slatewise
