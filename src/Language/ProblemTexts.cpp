#include "Language/L10n.h"

#include "Language/Said.h"

/// The sentences of `L10n` that say what went wrong with a card, a disk or what was left behind.
namespace slatewise {

std::string L10n::copyStopped(Text file, Text reason) const {
    return said(isTurkish(), "Copying stopped at {}: {}", "Kopyalama şu dosyada durdu: {} ({})",
                file, reason);
}

std::string L10n::hashingStopped(Text file, Text reason) const {
    return said(isTurkish(), "Hashing stopped at {}: {}", "Hash alma şu dosyada durdu: {} ({})",
                file, reason);
}

std::string L10n::notReadBack(Text file, Text reason) const {
    return said(isTurkish(), "The copy of {} could not be read back: {}",
                "Kopya geri okunamadı: {} ({})", file, reason);
}

std::string_view L10n::touchedAndStopped() const {
    return text("it was touched after its proof, and Stop came before it was read again",
                "kanıttan sonra dokunuldu, yeniden okunamadan durduruldu");
}

std::string L10n::copyDiffers(Text file) const {
    return said(isTurkish(), "The copy of {} differs from the card.",
                "Kopya karttakinden farklı: {}", file);
}

std::string L10n::foldersFellTogether(Text folder) const {
    return said(isTurkish(), "Two folders of the card are one folder on this disk: {}",
                "Kartın iki klasörü bu diskte tek klasör oldu: {}", folder);
}

std::string L10n::copyGone(Text file) const {
    return said(isTurkish(), "The copy of {} is no longer where it was written.",
                "Kopya yazıldığı yerde artık yok: {}", file);
}

std::string L10n::nameNotKept(Text file) const {
    return said(isTurkish(),
                "The disk does not list {} under this name: it keeps another one, or none.",
                "Disk bunu bu adla listelemiyor, başka bir ad yazmış ya da hiç yazmamış: {}", file);
}

std::string L10n::moreNamesNotKept(int files) const {
    return said(isTurkish(), "The disk does not list {} more files under their names.",
                "Disk {} dosyayı daha kendi adıyla listelemiyor.", files);
}

std::string L10n::cardChanged(Text file) const {
    return said(isTurkish(), "This file changed while the card was read: {}",
                "Kart okunurken değişti: {}", file);
}

std::string L10n::cameMeanwhile(Text file) const {
    return said(isTurkish(), "This file came while the card was read and is missing here: {}",
                "Kart okunurken geldi, burada eksik: {}", file);
}

std::string L10n::folderNotRead(Text folder, Text reason) const {
    return said(isTurkish(), "{} could not be read, and is missing or incomplete here: {}",
                "Okunamadı, burada eksik ya da yarım: {} ({})", folder, reason);
}

std::string L10n::nothingReadBack(Text disk, Text reason) const {
    return said(isTurkish(), "{} could not keep what was written, nothing was read back: {}",
                "{} yazılanları saklayamadı, hiçbir kopya geri okunmadı: {}", disk, reason);
}

std::string L10n::readFromMemory(Text subject) const {
    return said(isTurkish(), "{}: the read-back may have come from memory and not from the disk.",
                "{}: geri okuma diskten değil bellekten gelmiş olabilir.", subject);
}

std::string L10n::readBackFromMemory(Text subject) const {
    return readFromMemory(subject) +
           (isTurkish()
                ? " Emin olmak için diski çıkarıp yeniden takın ve slatewise-verify ile denetleyin."
                : " To be sure, eject the disk, connect it again and check it with "
                  "slatewise-verify.");
}

std::string L10n::notOpened(Text volume, Text reason) const {
    return said(isTurkish(), "{} could not be opened: {}", "{} açılamadı: {}", volume, reason);
}

std::string L10n::cardGone(Text card) const {
    return said(isTurkish(), "The card {} is no longer there.", "{} kartı artık yerinde değil.",
                card);
}

std::string L10n::diskReplaced(Text disk) const {
    return said(isTurkish(), "The disk {} is no longer the one that was chosen.",
                "{} diski artık seçilen disk değil.", disk);
}

std::string L10n::cardSilent(Text card) const {
    return said(isTurkish(), "The card {} does not answer.", "{} kartı yanıt vermiyor.", card);
}

std::string L10n::diskSilent(Text disk) const {
    return said(isTurkish(), "The disk {} does not answer.", "{} diski yanıt vermiyor.", disk);
}

std::string L10n::noAnswer(Text pair) const {
    return said(isTurkish(), "{}: the card or the disk does not answer.",
                "{}: kart ya da disk yanıt vermiyor.", pair);
}

std::string L10n::adviceStopped(Text button) const {
    return said(isTurkish(), "You stopped it. Do not wipe the card; press {} to begin again.",
                "Siz durdurdunuz. Kartı silmeyin; yeniden başlamak için {} düğmesine basın.",
                button);
}

std::string L10n::adviceNoSpace(Text button) const {
    return said(
        isTurkish(),
        "Make room on the disk or choose another one, then press {} again. Do not wipe the "
        "card.",
        "Diskte yer açın veya başka bir disk seçin, sonra yeniden {} düğmesine basın. Kartı "
        "silmeyin.",
        button);
}

std::string L10n::adviceCardGone(Text button) const {
    return said(isTurkish(), "Put the card in again, tick it and press {}. Do not wipe it.",
                "Kartı yeniden takıp işaretleyin ve {} düğmesine basın. Kartı silmeyin.", button);
}

std::string L10n::adviceDiskGone(Text button) const {
    return said(isTurkish(), "Connect the disk again, tick it and press {}. Do not wipe the card.",
                "Diski yeniden bağlayıp işaretleyin ve {} düğmesine basın. Kartı silmeyin.",
                button);
}

std::string L10n::adviceNotRead(Text button) const {
    return said(
        isTurkish(),
        "Do not wipe the card. Press {} again; if that fails too, try another reader or cable.",
        "Kartı silmeyin. Yeniden {} düğmesine basın; yine olmazsa başka okuyucu veya kablo "
        "deneyin.",
        button);
}

std::string L10n::adviceOtherDisk(Text button) const {
    return said(isTurkish(),
                "Do not wipe the card. This disk cannot take it: choose another one and press {}.",
                "Kartı silmeyin. Bu disk onu alamıyor: başka bir disk seçip {} düğmesine basın.",
                button);
}

std::string L10n::adviceReports(Text button, bool wasHashing) const {
    if (wasHashing)
        return said(isTurkish(),
                    "Everything was hashed, its reports are not complete. Mend the cause and press "
                    "{} again.",
                    "Hash alma tamam, raporları eksik. Nedeni giderip yeniden {} düğmesine basın.",
                    button);
    return said(
        isTurkish(),
        "The copy itself is complete, its reports are not. Mend the cause and press {} again.",
        "Kopyanın kendisi tamam, raporları eksik. Nedeni giderip yeniden {} düğmesine basın.",
        button);
}

std::string L10n::adviceRetry(Text button) const {
    return said(isTurkish(), "Do not wipe the card. Press {} to try again.",
                "Kartı silmeyin. Yeniden denemek için {} düğmesine basın.", button);
}

std::string L10n::pairNotBegun(Text pair) const {
    return said(isTurkish(), "{} was not begun.", "{} başlatılmadı.", pair);
}

std::string L10n::linkLeadsOut(Text link) const {
    return said(isTurkish(), "The link {} does not stay on the card and was left out.",
                "Bağlantı kartın içinde kalmıyor, dışarıda bırakıldı: {}", link);
}

std::string L10n::linkLeadsNowhere(Text link) const {
    return said(isTurkish(), "The link {} leads nowhere and was left out.",
                "Bağlantı hiçbir yere çıkmıyor, dışarıda bırakıldı: {}", link);
}

std::string L10n::linkLeadsToNoFile(Text link) const {
    return said(isTurkish(), "The link {} leads to no file and was left out.",
                "Bağlantı bir dosyaya çıkmıyor, dışarıda bırakıldı: {}", link);
}

std::string L10n::fileSystemErrors(Text volume) const {
    return said(isTurkish(), "{}: errors were reported meanwhile; something may be missing.",
                "{}: bu sırada hata bildirildi, veri eksik olabilir.", volume);
}

std::string L10n::damageUntold(Text card) const {
    return said(isTurkish(),
                "{}: damage in a folder would not be noticed here, most likely because the card is "
                "write-protected or its reader counts no errors. Compare the number of files with "
                "what the camera says.",
                "{}: klasörlerdeki hasar burada anlaşılamaz, çünkü büyük olasılıkla kart yazmaya "
                "karşı korumalı ya da okuyucusu hata saymıyor. Dosya sayısını kameranın "
                "söylediğiyle karşılaştırın.",
                card);
}

std::string L10n::deviceErrors(Text card) const {
    return said(
        isTurkish(),
        "{}: the reader reported errors meanwhile. Compare the number of files with what the "
        "camera says.",
        "{}: okuyucu bu sırada hata bildirdi. Dosya sayısını kameranın söylediğiyle karşılaştırın.",
        card);
}

std::string L10n::notMounted(Text folder) const {
    return said(isTurkish(), "{}: no disk is mounted there, the copy lies on the system's disk.",
                "{}: buraya disk bağlı değil, kopya sistem diskinde duruyor.", folder);
}

std::string L10n::reportsNotWritten(Text place, Text reason) const {
    return said(isTurkish(), "The reports could not be written to {}: {}",
                "Raporlar yazılamadı: {} ({})", place, reason);
}

std::string L10n::pagesNotWritten(Text place, Text reason) const {
    return said(isTurkish(), "Report pages are missing in {}, though its lists are there: {}",
                "Rapor sayfaları eksik, listeler yazıldı: {} ({})", place, reason);
}

std::string L10n::reportsOutdated(Text place) const {
    return said(isTurkish(), "The reports in {} still tell of an earlier end; do not trust them.",
                "Şuradaki raporlar hâlâ daha önceki bir sonucu anlatıyor, onlara güvenmeyin: {}",
                place);
}

std::string L10n::archiveNotMounted(Text folder) const {
    return said(isTurkish(),
                "The disk of the reports folder {} is not mounted. Connect it, or choose another "
                "reports folder.",
                "Rapor klasörünün diski bağlı değil: {}. Diski bağlayın ya da başka bir rapor "
                "klasörü seçin.",
                folder);
}

std::string L10n::sessionNotStored(Text card, Text reason) const {
    return said(isTurkish(), "The offload of {} is missing in the history: {}",
                "{} aktarımı geçmişe yazılamadı: {}", card, reason);
}

std::string L10n::sessionNotQueued(Text card, Text reason) const {
    return said(isTurkish(), "The service will not hear of the offload of {}: {}",
                "{} aktarımı raporlama servisine bildirilemeyecek: {}", card, reason);
}

std::string L10n::historySetAside(Text file) const {
    return said(isTurkish(),
                "The history was damaged and a new one was begun. The old one is kept as {}",
                "Geçmiş bozuktu, yenisi başlatıldı. Eskisi burada duruyor: {}", file);
}

std::string L10n::historyLost(Text reason) const {
    return said(isTurkish(),
                "The history could not be written: what was offloaded since the start is missing "
                "in it, and among the reports that wait for the service: {}",
                "Geçmişe yazılamadı, başlangıçtan beri aktarılanlar geçmişte ve servise gidecekler "
                "arasında yok: {}",
                reason);
}

std::string L10n::cardListNotChecked(Text list, Text reason) const {
    return said(isTurkish(),
                "The hash list that the card brought could not be read, so the card was not held "
                "against it: {} ({})",
                "Kartın getirdiği hash listesi okunamadı, kart onunla karşılaştırılmadı: {} ({})",
                list, reason);
}

std::string L10n::cardListNotRead(Text list, Text reason) const {
    return said(isTurkish(), "The hash list that the card brought could not be read: {} ({})",
                "Kartın getirdiği hash listesi okunamadı: {} ({})", list, reason);
}

std::string L10n::cardDiffersFromList(Text file) const {
    return said(isTurkish(), "{} on the card is not what the card's own hash list says.",
                "Karttaki dosya kartın kendi hash listesinden farklı: {}", file);
}

std::string L10n::listedFileMissing(Text file) const {
    return said(isTurkish(), "{} is in the card's own hash list, but not on the card.",
                "Kartın kendi hash listesindeki dosya kartta yok: {}", file);
}

std::string L10n::listedFileUnproved(Text file) const {
    return said(isTurkish(), "The card's own hash list has no value that proves {}.",
                "Kartın kendi hash listesinde dosyayı kanıtlayan bir değer yok: {}", file);
}

std::string L10n::cardFileNotListed(Text file) const {
    return said(isTurkish(), "{} is on the card, but not in the card's own hash list.",
                "Karttaki dosya kartın kendi hash listesinde yok: {}", file);
}

std::string L10n::listNotWritten(Text folder, Text reason) const {
    return said(isTurkish(), "The hash list of {} could not be written: {}",
                "Kopyanın hash listesi yazılamadı: {} ({})", folder, reason);
}

std::string L10n::nameNotListed(Text name) const {
    return said(isTurkish(), "Left out of the hash list, which cannot hold its name: {}",
                "Hash listesi bu adı tutamadığı için dışarıda bırakıldı: {}", name);
}

std::string L10n::moreDifferFromList(int files) const {
    return said(isTurkish(),
                "{} more files on the card are not what the card's own hash list says.",
                "Karttaki {} dosya daha kartın kendi hash listesinden farklı.", files);
}

std::string L10n::moreListedFilesMissing(int files) const {
    return said(isTurkish(), "{} more files are in the card's own hash list, but not on the card.",
                "Kartın kendi hash listesindeki {} dosya daha kartta yok.", files);
}

std::string L10n::moreListedFilesUnproved(int files) const {
    return said(isTurkish(), "The card's own hash list has no value that proves {} more files.",
                "Kartın kendi hash listesinde {} dosyayı daha kanıtlayan bir değer yok.", files);
}

std::string L10n::moreCardFilesNotListed(int files) const {
    return said(isTurkish(), "{} more files are on the card, but not in the card's own hash list.",
                "Karttaki {} dosya daha kartın kendi hash listesinde yok.", files);
}

std::string L10n::moreNamesNotListed(int files) const {
    return said(isTurkish(),
                "{} more files were left out of the hash list, which cannot hold their names.",
                "Hash listesi adlarını tutamadığı için {} dosya daha dışarıda bırakıldı.", files);
}

} // namespace slatewise
