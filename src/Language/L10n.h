#pragma once

#include "Language/AppLanguage.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace slatewise {

/// Every text of the program in one language. A value without any other state: make one wherever a
/// language is at hand, or take `current()` far from the model. No operation fails.
///
/// The fixed texts stand in a table, both languages side by side, so that one alone does not
/// compile.
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
    std::string verifying(int done, int total, Text file, Text speed) const;
    std::string hashing(int done, int total, Text file, Text speed) const;
    std::string verified(int files, Text size) const;
    /// Of files that are on several disks now, each counted once.
    std::string verifiedOnDisks(int files, int disks, Text size) const;
    std::string timeLeft(Text time) const;
    std::string bytesOf(Text done, Text total) const;
    std::string hashed(int files) const;
    std::string failed(Text message) const;
    std::string extraCards(int count) const;
    std::string extraDestinations(int count) const;
    std::string batchCard(int number, int count) const;
    std::string batchDestination(int number, int count) const;
    std::string verifyIncomplete(Text pair) const;
    std::string hashingIncomplete(Text card) const;
    /// What became of a pair, by its name; `why` may be empty.
    std::string pairVerified(Text pair, int files) const;
    std::string pairHashed(Text card, int files) const;
    std::string pairFailed(Text pair, Text why) const;
    /// Of a batch that is no news any more.
    std::string lastVerified(int files, bool hasNotes, Text time) const;
    std::string lastHashed(int files, bool hasNotes, Text time) const;
    std::string lastFailed(Text time) const;
    /// Of a card that was copied before, and of one of which other files would be copied now, be it
    /// that it has changed or what is skipped.
    std::string offloadedBefore(Text date, Text disks) const;
    std::string offloadedAndChanged(Text date, Text disks) const;
    /// Of a batch that ended with the program; `folder` may be empty.
    std::string lastCutOff(Text card, Text destination, Text folder) const;
    std::string unitFor(Text card) const;
    std::string cardHasNoUnit(Text card) const;
    std::string cardIsNoDestination(Text card) const;
    std::string sizeMismatch(Text source, Text copy) const;
    std::string endedEarly(Text size, Text read) const;
    /// `disk` may be empty.
    std::string insufficientSpace(Text needed, Text free, Text disk = {}) const;
    /// Of one that has no sentence here.
    std::string systemError(int code) const;
    std::string ejectFailed(Text name) const;
    /// Of a volume that was unmounted and may be unplugged.
    std::string safeToPull(Text name) const;
    /// Of one that must not be unplugged, for the sake of another volume of the same disk.
    std::string unmountedButInUse(Text name) const;
    std::string notEjected(Text name, Text reason) const;
    std::string ejectInDoubt(Text name) const;
    std::string fileCount(int count) const;
    std::string folderCount(int count) const;
    std::string reportCounts(int copied, int skipped, int failed) const;
    std::string reportHashedCounts(int hashed, int skipped, int failed) const;
    /// How many files were copied and not proved.
    std::string reportUnproved(int files) const;
    /// What a list has no room for, and where all of it stands; a count of 0 is of one sentence
    /// that is cut.
    std::string reportMoreProblems(int count, int page) const;
    /// Without the folder and size facts that follow it.
    std::string destinationInsideCard(Text destination, Text card) const;
    std::string sameDestination(Text one, Text other) const;
    std::string archiveInsideCard(Text archive, Text card) const;
    std::string cardInsideSession(Text card, Text session) const;
    std::string copyStopped(Text file, Text reason) const;
    std::string hashingStopped(Text file, Text reason) const;
    std::string notReadBack(Text file, Text reason) const;
    /// A reason for that.
    std::string_view touchedAndStopped() const;
    std::string copyDiffers(Text file) const;
    std::string foldersFellTogether(Text folder) const;
    std::string copyGone(Text file) const;
    std::string nameNotKept(Text file) const;
    std::string moreNamesNotKept(int files) const;
    std::string cardChanged(Text file) const;
    std::string cameMeanwhile(Text file) const;
    std::string folderNotRead(Text folder, Text reason) const;
    std::string nothingReadBack(Text disk, Text reason) const;
    std::string readFromMemory(Text subject) const;
    /// The same of a copy's proof, with what to do.
    std::string readBackFromMemory(Text subject) const;
    std::string notOpened(Text volume, Text reason) const;
    std::string cardGone(Text card) const;
    std::string diskReplaced(Text disk) const;
    std::string cardSilent(Text card) const;
    std::string diskSilent(Text disk) const;
    std::string noAnswer(Text pair) const;
    /// What to do about a failure; `button` is the word on the button that tries again.
    std::string adviceStopped(Text button) const;
    std::string adviceNoSpace(Text button) const;
    std::string adviceCardGone(Text button) const;
    std::string adviceDiskGone(Text button) const;
    std::string adviceNotRead(Text button) const;
    /// Where the disk cannot hold what the card has.
    std::string adviceOtherDisk(Text button) const;
    /// Where all is well but the reports.
    std::string adviceReports(Text button, bool wasHashing) const;
    std::string adviceRetry(Text button) const;
    std::string pairNotBegun(Text pair) const;
    std::string linkLeadsOut(Text link) const;
    std::string linkLeadsNowhere(Text link) const;
    std::string linkLeadsToNoFile(Text link) const;
    std::string fileSystemErrors(Text volume) const;
    std::string damageUntold(Text card) const;
    std::string deviceErrors(Text card) const;
    std::string notMounted(Text folder) const;
    std::string reportsNotWritten(Text place, Text reason) const;
    std::string pagesNotWritten(Text place, Text reason) const;
    std::string reportsOutdated(Text place) const;
    std::string archiveNotMounted(Text folder) const;
    std::string sessionNotStored(Text card, Text reason) const;
    std::string sessionNotQueued(Text card, Text reason) const;
    std::string historySetAside(Text file) const;
    std::string historyLost(Text reason) const;
    std::string cardListNotChecked(Text list, Text reason) const;
    std::string cardListNotRead(Text list, Text reason) const;
    std::string cardDiffersFromList(Text file) const;
    std::string listedFileMissing(Text file) const;
    std::string listedFileUnproved(Text file) const;
    std::string cardFileNotListed(Text file) const;
    std::string listNotWritten(Text folder, Text reason) const;
    std::string nameNotListed(Text name) const;
    /// What stands behind the first few of these, of two files or more.
    std::string moreDifferFromList(int files) const;
    std::string moreListedFilesMissing(int files) const;
    std::string moreListedFilesUnproved(int files) const;
    std::string moreCardFilesNotListed(int files) const;
    std::string moreNamesNotListed(int files) const;
    /// What a copy was found to be that was read again at some time.
    std::string checkFoundAllEqual(Text date, int files) const;
    std::string checkFoundDifferences(Text date, int differences) const;
    std::string checkFailed(Text date, Text reason) const;
    std::string checkNotStored(Text reason) const;
    std::string onlyLatestShown(std::size_t sessions) const;
    std::string templateLeadsOut(Text pathTemplate) const;
    std::string cannotStart(Text reason) const;
    /// The state of the connection to the reporting service.
    std::string connected(Text account, Text address) const;
    std::string standalone() const;
    std::string profileIgnored(Text file, Text reason) const;
    std::string profileOpenToOthers(Text path) const;
    std::string profileLacksText(Text key) const;

    // Fixed texts.

#define SLATEWISE_TEXT(key, english, turkish)                                                      \
    Text key() const {                                                                             \
        return text(english, turkish);                                                             \
    }
#include "Language/FixedTexts.inc"
#undef SLATEWISE_TEXT

private:
    constexpr Text text(Text english, Text turkish) const {
        return isTurkish() ? turkish : english;
    }

    AppLanguage language_;
};

} // namespace slatewise
