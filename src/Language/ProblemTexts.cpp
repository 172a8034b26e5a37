#include "Language/L10n.h"

#include <fmt/format.h>

/// The sentences of `L10n` that say what went wrong with a card, a disk or what was left behind.
namespace slatewise {

std::string L10n::copyStopped(Text file, Text reason) const {
    return isTurkish() ? fmt::format("Kopyalama şu dosyada durdu: {} ({})", file, reason)
                       : fmt::format("Copying stopped at {}: {}", file, reason);
}

std::string L10n::hashingStopped(Text file, Text reason) const {
    return isTurkish() ? fmt::format("Hash alma şu dosyada durdu: {} ({})", file, reason)
                       : fmt::format("Hashing stopped at {}: {}", file, reason);
}

std::string L10n::notReadBack(Text file, Text reason) const {
    return isTurkish() ? fmt::format("Kopya geri okunamadı: {} ({})", file, reason)
                       : fmt::format("The copy of {} could not be read back: {}", file, reason);
}

std::string L10n::copyDiffers(Text file) const {
    return isTurkish() ? fmt::format("Kopya karttakinden farklı: {}", file)
                       : fmt::format("The copy of {} differs from the card.", file);
}

std::string L10n::foldersFellTogether(Text folder) const {
    return isTurkish()
               ? fmt::format("Kartın iki klasörü bu diskte tek klasör oldu: {}", folder)
               : fmt::format("Two folders of the card are one folder on this disk: {}", folder);
}

std::string L10n::copyGone(Text file) const {
    return isTurkish() ? fmt::format("Kopya yazıldığı yerde artık yok: {}", file)
                       : fmt::format("The copy of {} is no longer where it was written.", file);
}

std::string L10n::cardChanged(Text file) const {
    return isTurkish() ? fmt::format("Kart okunurken değişti: {}", file)
                       : fmt::format("This file changed while the card was read: {}", file);
}

std::string L10n::cameMeanwhile(Text file) const {
    return isTurkish()
               ? fmt::format("Kart okunurken geldi, burada eksik: {}", file)
               : fmt::format("This file came while the card was read and is missing here: {}",
                             file);
}

std::string L10n::folderNotRead(Text folder, Text reason) const {
    return isTurkish() ? fmt::format("Okunamadı, burada eksik ya da yarım: {} ({})", folder, reason)
                       : fmt::format("{} could not be read, and is missing or incomplete here: {}",
                                     folder, reason);
}

std::string L10n::nothingReadBack(Text disk, Text reason) const {
    return isTurkish()
               ? fmt::format("{} yazılanları saklayamadı, hiçbir kopya geri okunmadı: {}", disk,
                             reason)
               : fmt::format("{} could not keep what was written, nothing was read back: {}", disk,
                             reason);
}

std::string L10n::readFromMemory(Text subject) const {
    return isTurkish()
               ? fmt::format("{}: geri okuma diskten değil bellekten gelmiş olabilir.", subject)
               : fmt::format("{}: the read-back may have come from memory and not from the disk.",
                             subject);
}

std::string L10n::readBackFromMemory(Text subject) const {
    return readFromMemory(subject) +
           (isTurkish()
                ? " Emin olmak için diski çıkarıp yeniden takın ve slatewise-verify ile denetleyin."
                : " To be sure, eject the disk, connect it again and check it with "
                  "slatewise-verify.");
}

std::string L10n::notOpened(Text volume, Text reason) const {
    return isTurkish() ? fmt::format("{} açılamadı: {}", volume, reason)
                       : fmt::format("{} could not be opened: {}", volume, reason);
}

std::string L10n::cardGone(Text card) const {
    return isTurkish() ? fmt::format("{} kartı artık yerinde değil.", card)
                       : fmt::format("The card {} is no longer there.", card);
}

std::string L10n::diskReplaced(Text disk) const {
    return isTurkish() ? fmt::format("{} diski artık seçilen disk değil.", disk)
                       : fmt::format("The disk {} is no longer the one that was chosen.", disk);
}

std::string L10n::cardSilent(Text card) const {
    return isTurkish() ? fmt::format("{} kartı yanıt vermiyor.", card)
                       : fmt::format("The card {} does not answer.", card);
}

std::string L10n::diskSilent(Text disk) const {
    return isTurkish() ? fmt::format("{} diski yanıt vermiyor.", disk)
                       : fmt::format("The disk {} does not answer.", disk);
}

std::string L10n::noAnswer(Text pair) const {
    return isTurkish() ? fmt::format("{}: kart ya da disk yanıt vermiyor.", pair)
                       : fmt::format("{}: the card or the disk does not answer.", pair);
}

std::string L10n::adviceStopped(Text button) const {
    return isTurkish()
               ? fmt::format("Siz durdurdunuz. Kartı silmeyin; yeniden başlamak için {} düğmesine "
                             "basın.",
                             button)
               : fmt::format("You stopped it. Do not wipe the card; press {} to begin again.",
                             button);
}

std::string L10n::adviceNoSpace(Text button) const {
    return isTurkish()
               ? fmt::format(
                     "Diskte yer açın veya başka bir disk seçin, sonra yeniden {} düğmesine "
                     "basın.",
                     button)
               : fmt::format("Make room on the disk or choose another one, then press {} again.",
                             button);
}

std::string L10n::adviceCardGone(Text button) const {
    return isTurkish()
               ? fmt::format(
                     "Kartı yeniden takıp işaretleyin ve {} düğmesine basın. Kartı silmeyin.",
                     button)
               : fmt::format("Put the card in again, tick it and press {}. Do not wipe it.",
                             button);
}

std::string L10n::adviceDiskGone(Text button) const {
    return isTurkish()
               ? fmt::format("Diski yeniden bağlayıp işaretleyin ve {} düğmesine basın. "
                             "Kartı silmeyin.",
                             button)
               : fmt::format("Connect the disk again, tick it and press {}. Do not wipe the "
                             "card.",
                             button);
}

std::string L10n::adviceNotRead(Text button) const {
    return isTurkish()
               ? fmt::format("Kartı silmeyin. Yeniden {} düğmesine basın; yine olmazsa başka "
                             "okuyucu veya kablo deneyin.",
                             button)
               : fmt::format("Do not wipe the card. Press {} again; if that fails too, try another "
                             "reader or cable.",
                             button);
}

std::string L10n::adviceOtherDisk(Text button) const {
    return isTurkish()
               ? fmt::format("Kartı silmeyin. Bu disk onu alamıyor: başka bir disk seçip {} "
                             "düğmesine basın.",
                             button)
               : fmt::format("Do not wipe the card. This disk cannot take it: choose another one "
                             "and press {}.",
                             button);
}

std::string L10n::adviceReports(Text button, bool wasHashing) const {
    if (wasHashing)
        return isTurkish()
                   ? fmt::format("Hash alma tamam, raporları eksik. Nedeni giderip yeniden {} "
                                 "düğmesine basın.",
                                 button)
                   : fmt::format("Everything was hashed, its reports are not complete. Mend the "
                                 "cause and press {} again.",
                                 button);
    return isTurkish()
               ? fmt::format("Kopyanın kendisi tamam, raporları eksik. Nedeni giderip yeniden {} "
                             "düğmesine basın.",
                             button)
               : fmt::format("The copy itself is complete, its reports are not. Mend the cause "
                             "and press {} again.",
                             button);
}

std::string L10n::adviceRetry(Text button) const {
    return isTurkish()
               ? fmt::format("Kartı silmeyin. Yeniden denemek için {} düğmesine basın.", button)
               : fmt::format("Do not wipe the card. Press {} to try again.", button);
}

std::string L10n::pairNotBegun(Text pair) const {
    return isTurkish() ? fmt::format("{} başlatılmadı.", pair)
                       : fmt::format("{} was not begun.", pair);
}

std::string L10n::linkLeadsOut(Text link) const {
    return isTurkish()
               ? fmt::format("Bağlantı kartın içinde kalmıyor, dışarıda bırakıldı: {}", link)
               : fmt::format("The link {} does not stay on the card and was left out.", link);
}

std::string L10n::linkLeadsNowhere(Text link) const {
    return isTurkish() ? fmt::format("Bağlantı hiçbir yere çıkmıyor, dışarıda bırakıldı: {}", link)
                       : fmt::format("The link {} leads nowhere and was left out.", link);
}

std::string L10n::linkLeadsToNoFile(Text link) const {
    return isTurkish() ? fmt::format("Bağlantı bir dosyaya çıkmıyor, dışarıda bırakıldı: {}", link)
                       : fmt::format("The link {} leads to no file and was left out.", link);
}

std::string L10n::fileSystemErrors(Text volume) const {
    return isTurkish()
               ? fmt::format("Dosya sistemi bu sırada hata bildirdi, veri eksik olabilir: {}",
                             volume)
               : fmt::format("The file system of {} reported errors meanwhile; something may "
                             "be missing.",
                             volume);
}

std::string L10n::damageUntold(Text card) const {
    return isTurkish()
               ? fmt::format("{}: klasörlerdeki hasar burada anlaşılamaz, çünkü büyük olasılıkla "
                             "kart yazmaya karşı korumalı ya da okuyucusu hata saymıyor. Dosya "
                             "sayısını kameranın "
                             "söylediğiyle karşılaştırın.",
                             card)
               : fmt::format("{}: damage in a folder would not be noticed here, most likely "
                             "because the card is write-protected or its reader counts no errors. "
                             "Compare the number of files with what the camera says.",
                             card);
}

std::string L10n::deviceErrors(Text card) const {
    return isTurkish()
               ? fmt::format("{}: okuyucu bu sırada hata bildirdi. Dosya sayısını kameranın "
                             "söylediğiyle karşılaştırın.",
                             card)
               : fmt::format("{}: the reader reported errors meanwhile. Compare the number of "
                             "files with what the camera says.",
                             card);
}

std::string L10n::notMounted(Text folder) const {
    return isTurkish()
               ? fmt::format("{}: buraya disk bağlı değil, kopya sistem diskinde duruyor.", folder)
               : fmt::format("{}: no disk is mounted there, the copy lies on the system's disk.",
                             folder);
}

std::string L10n::reportsNotWritten(Text place, Text reason) const {
    return isTurkish() ? fmt::format("Raporlar yazılamadı: {} ({})", place, reason)
                       : fmt::format("The reports could not be written to {}: {}", place, reason);
}

std::string L10n::pagesNotWritten(Text place, Text reason) const {
    return isTurkish()
               ? fmt::format("Rapor sayfaları eksik, listeler yazıldı: {} ({})", place, reason)
               : fmt::format("Report pages are missing in {}, though its lists are there: {}",
                             place, reason);
}

std::string L10n::reportsOutdated(Text place) const {
    return isTurkish()
               ? fmt::format("Şuradaki raporlar hâlâ daha önceki bir sonucu anlatıyor, onlara "
                             "güvenmeyin: {}",
                             place)
               : fmt::format("The reports in {} still tell of an earlier end; do not trust them.",
                             place);
}

std::string L10n::archiveNotMounted(Text folder) const {
    return isTurkish()
               ? fmt::format(
                     "Rapor klasörünün diski bağlı değil: {}. Diski bağlayın ya da başka bir "
                     "rapor klasörü seçin.",
                     folder)
               : fmt::format("The disk of the reports folder {} is not mounted. Connect it, or "
                             "choose another reports folder.",
                             folder);
}

std::string L10n::sessionNotStored(Text card, Text reason) const {
    return isTurkish()
               ? fmt::format("{} aktarımı geçmişe yazılamadı: {}", card, reason)
               : fmt::format("The offload of {} is missing in the history: {}", card, reason);
}

std::string L10n::sessionNotQueued(Text card, Text reason) const {
    return isTurkish()
               ? fmt::format("{} aktarımı raporlama servisine bildirilemeyecek: {}", card, reason)
               : fmt::format("The service will not hear of the offload of {}: {}", card, reason);
}

std::string L10n::historySetAside(Text file) const {
    return isTurkish()
               ? fmt::format("Geçmiş bozuktu, yenisi başlatıldı. Eskisi burada duruyor: {}", file)
               : fmt::format("The history was damaged and a new one was begun. The old one is "
                             "kept as {}",
                             file);
}

std::string L10n::historyLost(Text reason) const {
    return isTurkish() ? fmt::format("Geçmişe yazılamadı, başlangıçtan beri aktarılanlar geçmişte "
                                     "ve servise gidecekler arasında yok: {}",
                                     reason)
                       : fmt::format("The history could not be written: what was offloaded since "
                                     "the start is missing in it, and among the reports that wait "
                                     "for the service: {}",
                                     reason);
}

std::string L10n::cardListNotChecked(Text card) const {
    return isTurkish()
               ? fmt::format("{} bir hash listesi getirdi, denetlenmedi; “{}” (--mhl) açıkken "
                             "denetlenir.",
                             card, writesHashList())
               : fmt::format("{} brings a hash list, which was not checked; with “{}” (--mhl) "
                             "it is.",
                             card, writesHashList());
}

std::string L10n::cardListNotRead(Text list, Text reason) const {
    return isTurkish()
               ? fmt::format("Kartın getirdiği hash listesi okunamadı: {} ({})", list, reason)
               : fmt::format("The hash list that the card brought could not be read: {} "
                             "({})",
                             list, reason);
}

std::string L10n::cardDiffersFromList(Text file) const {
    return isTurkish()
               ? fmt::format("Karttaki dosya kartın kendi hash listesinden farklı: {}", file)
               : fmt::format("{} on the card is not what the card's own hash list says.", file);
}

std::string L10n::listedFileMissing(Text file) const {
    return isTurkish()
               ? fmt::format("Kartın kendi hash listesindeki dosya kartta yok: {}", file)
               : fmt::format("{} is in the card's own hash list, but not on the card.", file);
}

std::string L10n::listedFileUnproved(Text file) const {
    return isTurkish()
               ? fmt::format("Kartın kendi hash listesinde dosyayı kanıtlayan bir değer yok: {}",
                             file)
               : fmt::format("The card's own hash list has no value that proves {}.", file);
}

std::string L10n::cardFileNotListed(Text file) const {
    return isTurkish()
               ? fmt::format("Karttaki dosya kartın kendi hash listesinde yok: {}", file)
               : fmt::format("{} is on the card, but not in the card's own hash list.", file);
}

std::string L10n::listNotWritten(Text folder, Text reason) const {
    return isTurkish()
               ? fmt::format("Kopyanın hash listesi yazılamadı: {} ({})", folder, reason)
               : fmt::format("The hash list of {} could not be written: {}", folder, reason);
}

std::string L10n::nameNotListed(Text name) const {
    return isTurkish()
               ? fmt::format("Hash listesi bu adı tutamadığı için dışarıda bırakıldı: {}", name)
               : fmt::format("Left out of the hash list, which cannot hold its name: {}", name);
}

std::string L10n::moreDifferFromList(int files) const {
    return isTurkish()
               ? fmt::format("Karttaki {} dosya daha kartın kendi hash listesinden farklı.", files)
               : fmt::format(
                     "{} more files on the card are not what the card's own hash list says.",
                     files);
}

std::string L10n::moreListedFilesMissing(int files) const {
    return isTurkish()
               ? fmt::format("Kartın kendi hash listesindeki {} dosya daha kartta yok.", files)
               : fmt::format("{} more files are in the card's own hash list, but not on the card.",
                             files);
}

std::string L10n::moreListedFilesUnproved(int files) const {
    return isTurkish()
               ? fmt::format("Kartın kendi hash listesinde {} dosyayı daha kanıtlayan bir değer "
                             "yok.",
                             files)
               : fmt::format("The card's own hash list has no value that proves {} more files.",
                             files);
}

std::string L10n::moreCardFilesNotListed(int files) const {
    return isTurkish()
               ? fmt::format("Karttaki {} dosya daha kartın kendi hash listesinde yok.", files)
               : fmt::format("{} more files are on the card, but not in the card's own hash list.",
                             files);
}

std::string L10n::moreNamesNotListed(int files) const {
    return isTurkish()
               ? fmt::format(
                     "Hash listesi adlarını tutamadığı için {} dosya daha dışarıda bırakıldı.",
                     files)
               : fmt::format(
                     "{} more files were left out of the hash list, which cannot hold their "
                     "names.",
                     files);
}

} // namespace slatewise
