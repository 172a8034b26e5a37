#pragma once

#include "Language/AppLanguage.h"

#include <string>
#include <string_view>

namespace slatewise {

/// Every text of the program in one language. A value without any other state: make one wherever a
/// language is at hand, or take `current()` far from the model. No operation fails.
///
/// A text takes both languages as arguments, so that one alone does not compile.
class L10n {
public:
    /// A text that needs no arguments. Lives as long as the program.
    using Text = std::string_view;

    explicit constexpr L10n(AppLanguage language) : language_(language) {}

    /// In the stored language, read at the moment of the call.
    static L10n current();

    constexpr AppLanguage language() const { return language_; }
    constexpr bool isTurkish() const { return language_ == AppLanguage::Turkish; }

    // Texts around arguments. Numbers come as plain digits; sizes and speeds as finished text.

    std::string copying(int done, int total, Text file, Text speed) const;
    std::string verifying(int done, int total, Text file) const;
    std::string verified(int files, Text size) const;
    std::string hashed(int files) const;
    std::string failed(Text message) const;
    std::string extraCards(int count) const;
    std::string extraDestinations(int count) const;
    std::string batchCard(int number, int count) const;
    std::string batchDestination(int number, int count) const;
    std::string verifyIncomplete(Text card, Text destination) const;
    std::string whichNamedCard(Text card) const;
    std::string markCardAs(Text unit) const;
    std::string sizeMismatch(Text source, Text copy) const;
    std::string hashMismatch(Text file) const;
    std::string insufficientSpace(Text needed, Text free) const;
    std::string ejectFailed(Text name) const;
    std::string fileCount(int count) const;
    std::string folderCount(int count) const;
    std::string reportCounts(int copied, int skipped, int failed) const;
    /// Without the folder and size facts that follow it.
    std::string reportCountsLine(int copied, int skipped, int failed) const;
    /// The unit of a card, a dash when it has none.
    std::string cameraChip(Text unit) const;

    // Fixed texts.

    // clang-format off
    Text idlePrompt() const { return text("Select a card, a unit, and a destination, then press Copy.", "Kart, birim ve hedef seçip Kopyala’ya basın."); }
    Text scanning() const { return text("Scanning card…", "Kart taranıyor…"); }
    Text cardNamePlaceholder() const { return text("CARD_NAME", "CARD_NAME"); }
    Text unitPlaceholder() const { return text("UNIT", "UNIT"); }
    Text measuringSize() const { return text("size…", "boyut…"); }
    Text folderTag() const { return text("folder", "klasör"); }
    Text cancelled() const { return text("Cancelled.", "İptal edildi."); }
    Text pickCardFolder() const { return text("Choose a camera card or source folder", "Kamera kartı veya kaynak klasörü seçin"); }
    Text pickDestFolder() const { return text("Choose a destination disk or folder", "Hedef disk veya klasör seçin"); }
    Text pickReportsFolder() const { return text("Choose the reports folder", "Rapor klasörünü seçin"); }
    Text use() const { return text("Use", "Kullan"); }
    Text cameraCard() const { return text("Camera card", "Kamera kartı"); }
    Text destinationDisk() const { return text("Destination disk", "Hedef disk"); }
    Text noCardMounted() const { return text("No card mounted", "Kart takılı değil"); }
    Text noDestination() const { return text("No destination disk", "Hedef disk yok"); }
    Text chooseFolder() const { return text("Choose folder…", "Klasör seç…"); }
    Text copy() const { return text("Copy", "Kopyala"); }
    Text stop() const { return text("Stop", "Durdur"); }
    Text advanced() const { return text("Advanced", "Advanced"); }
    Text selectCardsFirst() const { return text("Select one or more cards first.", "Önce bir veya birden fazla kart seçin."); }
    Text pickUnitFirst() const { return text("Assign a unit to every selected card before copying.", "Kopyadan önce her seçili karta bir birim atayın."); }
    Text selectUnit() const { return text("Select unit", "Unit seç"); }
    Text unitUsedInPath() const { return text("Used as {Cam} in the folder path. {Ekip} is the crew. Units are shared by every ekip and must be chosen again after restart.", "Klasör yolunda {Cam} birim, {Ekip} ekiptir. Birimler tüm ekiplerde ortaktır; program yeniden açılınca yeniden seçilir."); }
    Text addUnitsHint() const { return text("Tap a unit for the selected card. New adds a unit for every ekip; Delete removes the selected unit.", "Seçili kart için birime dokunun. Yeni tüm ekiplerde geçerli bir birim ekler; Sil seçili birimi kaldırır."); }
    Text setLabel() const { return text("Ekip", "Ekip"); }
    Text newButton() const { return text("New", "Yeni"); }
    Text deleteButton() const { return text("Delete", "Sil"); }
    Text addUnit() const { return text("Add unit", "Birim ekle"); }
    Text removeUnit() const { return text("Remove unit", "Birimi sil"); }
    Text noDiskPickFolder() const { return text("If no disk is listed, you can choose a folder.", "Disk yoksa bir klasör seçebilirsiniz."); }
    Text clearAll() const { return text("Clear all", "Tümünü temizle"); }
    Text removePath() const { return text("Remove path", "Yolu kaldır"); }
    Text unitNamePlaceholder() const { return text("Unit name", "Birim adı"); }
    Text setNamePlaceholder() const { return text("Ekip name", "Ekip adı"); }
    Text whichThisCard() const { return text("Which unit does this card belong to?", "Bu kart hangisine ait?"); }
    Text progressSuccess() const { return text("SUCCESS!", "BAŞARILI!"); }
    Text free() const { return text("free", "boş"); }
    Text total() const { return text("Total", "Toplam"); }
    Text select() const { return text("Select", "Seç"); }
    Text languageSection() const { return text("Language", "Dil"); }
    Text projectName() const { return text("Project name", "Proje adı"); }
    Text projectNamePlaceholder() const { return text("Main project name", "Ana proje adı"); }
    Text folderTemplate() const { return text("Folder template", "Klasör şablonu"); }
    Text edit() const { return text("Edit", "Düzenle"); }
    Text ejectAfterSuccess() const { return text("Eject card after a successful copy", "Başarılı kopyadan sonra kartı çıkar"); }
    Text verifyOnly() const { return text("Scan / hash only (no copy)", "Sadece tara / hash (kopyalama yok)"); }
    Text reportsNote() const { return text("The local archive and the destination reports/ folder use the same readable names (date_camera_card_time).", "Yerel arşiv ve hedef kökteki reports/ aynı okunaklı adları kullanır (tarih_kamera_kart_saat)."); }
    Text defaultText() const { return text("Default", "Varsayılan"); }
    Text revealInFinder() const { return text("Show in Finder", "Finder’da aç"); }
    Text reportsFolder() const { return text("Reports folder", "Rapor klasörü"); }
    Text done() const { return text("Done", "Tamam"); }
    Text skipIntro() const { return text("These names (files or folders) are not copied; a matching folder is skipped entirely. They are recorded as SKIP in the inventory. AppleDouble files starting with ._ are always skipped.", "Bu adlar (dosya veya klasör) kopyalanmaz; klasörse içi de atlanır. Envantere SKIP olarak girer. ._ ile başlayan AppleDouble dosyaları her zaman atlanır."); }
    Text defaultSystemJunk() const { return text("Default system junk", "Varsayılan sistem çöpü"); }
    Text userAdded() const { return text("Added by you", "Sizin eklediğiniz"); }
    Text remove() const { return text("Remove", "Kaldır"); }
    Text skipNamePlaceholder() const { return text("File or folder name", "Dosya veya klasör adı"); }
    Text add() const { return text("Add", "Ekle"); }
    Text skipHeader() const { return text("Do not copy", "Kopyalanmayanlar"); }
    Text skipFooter() const { return text("Examples: MISC, INDEX.DAT, Thumbs.db. On = skip; off = copy.", "Örnek: MISC, INDEX.DAT, Thumbs.db. Açık anahtar = atlanır; kapalı = kopyalanır."); }
    Text templateHint() const { return text("The whole path is editable, including destination and date.", "Yolun tamamı düzenlenebilir, hedef ve tarih dahil."); }
    Text clear() const { return text("Clear", "Temizle"); }
    Text presets() const { return text("Presets", "Hazır şablonlar"); }
    Text livePreview() const { return text("Live preview", "Canlı önizleme"); }
    Text cancel() const { return text("Cancel", "İptal"); }
    Text missingSelection() const { return text("Select a card and a destination disk.", "Kart ve hedef disk seçin."); }
    Text missingUnit() const { return text("Assign a unit to every selected card.", "Her seçili karta bir birim atayın."); }
    Text notAppleSilicon() const { return text("Slatewise DIT runs only on Apple Silicon Macs.", "Slatewise DIT yalnızca Apple Silicon Mac’te çalışır."); }
    Text unsupportedMac() const { return text("Unsupported Mac", "Desteklenmeyen Mac"); }
    Text appleSiliconOnly() const { return text("Slatewise DIT runs only on Apple Silicon (M-series) Macs.", "Slatewise DIT yalnızca Apple Silicon (M çipset) Mac’lerde çalışır."); }
    Text pdfFailed() const { return text("Could not create PDF", "PDF oluşturulamadı"); }
    Text reportTitle() const { return text("Slatewise DIT report", "Slatewise DIT raporu"); }
    Text reportContinued() const { return text("Slatewise DIT report (continued)", "Slatewise DIT raporu (devam)"); }
    Text reportSession() const { return text("Session", "Oturum"); }
    Text reportStatus() const { return text("Status", "Durum"); }
    Text reportCard() const { return text("Card", "Kart"); }
    Text reportDestination() const { return text("Destination", "Hedef"); }
    Text reportFiles() const { return text("Files", "Dosya"); }
    Text reportSize() const { return text("Size", "Boyut"); }
    Text reportStarted() const { return text("Started", "Başlangıç"); }
    Text reportFinished() const { return text("Finished", "Bitiş"); }
    Text expandAll() const { return text("Expand all", "Tümünü aç"); }
    Text collapseAll() const { return text("Collapse all", "Tümünü kapat"); }
    Text colName() const { return text("Name", "Ad"); }
    Text colAction() const { return text("Action", "İşlem"); }
    Text colVerify() const { return text("Verify", "Doğrulama"); }
    Text colTimecode() const { return text("TC start → end", "TC başlangıç → bitiş"); }
    Text colDuration() const { return text("Duration", "Süre"); }
    Text colCapTC() const { return text("cap / TC", "çekim / TC"); }
    Text colDF() const { return text("DF", "DF"); }
    Text colClip() const { return text("Clip", "Klip"); }
    Text colTiming() const { return text("Timing", "Zaman"); }
    Text colExactBytes() const { return text("Exact (bytes)", "Tam (bayt)"); }
    Text bytesUnit() const { return text("bytes", "bayt"); }
    Text pdfFooter() const { return text("SHA-256: checksums.sha256  ·  Reports_Standart.html  ·  Reports_Detailed.html  ·  Table: inventory.csv", "SHA-256: checksums.sha256  ·  Reports_Standart.html  ·  Reports_Detailed.html  ·  Tablo: inventory.csv"); }
    // clang-format on

private:
    constexpr Text text(Text english, Text turkish) const {
        return isTurkish() ? turkish : english;
    }

    AppLanguage language_;
};

} // namespace slatewise
