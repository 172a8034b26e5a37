#pragma once

#include "Language/BothLanguages.h"

#include <exception>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace slatewise {

/// Something about an offload that a person must know and that no row has room for. A value; its
/// sentence is made in whatever language it is read in.
struct OffloadProblem {
    enum class Kind {
        /// A file could not be read or written; the run ended there.
        CopyStopped,
        /// The same where nothing was to be copied.
        HashingStopped,
        /// A copy could not be read back.
        NotReadBack,
        /// A copy is not the same as what was read from the card.
        CopyDiffers,
        /// Two folders of the card have become one on the disk, which is the subject.
        FoldersFellTogether,
        /// What was proved does not lie where it was copied to any more.
        CopyGone,
        /// The disk does not list a copy, or the session's folder, under the name that it was
        /// given.
        NameNotKept,
        /// A file of the card is not the one that was read any more.
        CardChanged,
        /// A file came to the card after it was looked through, and was not copied.
        CameMeanwhile,
        /// A folder or a file of the card is missing, or part of a folder.
        FolderNotRead,
        /// A file system met damage while it was read or written, and may not have said where.
        FileSystemErrors,
        /// The card's file system would not tell of damage in its folders, nor count it.
        DamageUntold,
        /// The card's device met errors that its file system may have passed over.
        DeviceErrors,
        /// A disk is meant to be mounted on the destination, which is the subject, and none is.
        NotMounted,
        /// The disk could not keep what it was given, so that no copy was proved.
        NothingReadBack,
        /// What was compared may not have come from the disk itself.
        ReadFromMemory,
        /// The card or the disk, which is the subject, is there, but could not be opened.
        NotOpened,
        /// The card's path leads elsewhere now, or nowhere.
        CardGone,
        /// The same of a destination.
        DiskReplaced,
        /// Whoever asks the card for something does not come back.
        CardSilent,
        DiskSilent,
        /// One of the two of a pair, which is the subject.
        NoAnswer,
        /// A link on the card leads out of it; it was not copied.
        LinkLeadsOut,
        /// A link on the card leads to nothing, or in a circle.
        LinkLeadsNowhere,
        /// A link on the card leads to a folder, a FIFO or the like.
        LinkLeadsToNoFile,
        /// The file system's own folder for what it found when it was repaired; no camera's.
        LostAndFoundNotRead,
        /// The reports could not be written to the archive, which is the subject.
        ReportsNotArchived,
        /// They could not be written to the disk.
        ReportsNotCopied,
        /// Pages of theirs could not be made, there or here; their lists were.
        PagesNotWritten,
        /// Those that lie in the subject tell of a better end, and cannot be taken away.
        ReportsOutdated,
        /// Whoever stopped did not wait until they were written.
        ReportsNotAwaited,
        /// The offload of the card is missing in the history.
        SessionNotStored,
        /// The reporting service will not hear of it.
        SessionNotQueued,
        /// The history was damaged; a new one was begun. The subject is where the old one lies.
        HistorySetAside,
        /// A hash list that the card brought cannot be read, and none is to be written.
        CardListNotChecked,
        /// A hash list that the card brought cannot be read, and so cannot go on.
        CardListNotRead,
        /// A file is not what the card's own list says.
        CardDiffersFromList,
        /// The card's own list names a file that the card does not hold.
        ListedFileMissing,
        /// The card's own list names a file and has no value that could prove it.
        ListedFileUnproved,
        /// The card's own lists could name a file and do not.
        CardFileNotListed,
        /// The hash list of the copy could not be written.
        ListNotWritten,
        /// The hash list of the copy cannot hold a name.
        NameNotListed,
    };

    enum class Severity {
        /// The offload failed by it.
        Failure,
        /// The offload holds, but a person should know.
        Note,
    };

    Kind kind{};
    /// The file, folder or disk that it is about. Bytes as the file system has them.
    std::string subject;
    /// Why, as far as the system said; may be empty.
    BothLanguages reason{};
    /// The errno value behind it; 0 where there is none.
    int code = 0;
    /// Of very many alike each of the first is told, and then one without a subject of how many
    /// more there are: 2 at least. 0 for any other.
    int more = 0;

    /// With what a failure says. The sentence names its subject, so where the failure is that of
    /// the subject itself, or of `file`, the reason does not name it again.
    static OffloadProblem of(Kind kind, std::string subject, const std::exception& failure,
                             const std::filesystem::path& file = {});

    Severity severity() const;

    /// Whether the copy is what it should be all the same, and only its reports are not.
    bool isOfReports() const;

    /// What an offload failed by, of all that came up: what is wrong with the copy counts more than
    /// reports that came to nothing before. Null where nothing failed.
    static const OffloadProblem* decisive(std::span<const OffloadProblem> problems);

    /// Of very many alike, where each says no more than its subject, the first few and how many
    /// more there are.
    static std::vector<OffloadProblem> shortened(std::vector<OffloadProblem> problems);

    /// One sentence.
    std::string text(L10n l10n) const;

    /// The same for the log, with what only a developer asks for.
    std::string logLine() const;

    friend bool operator==(const OffloadProblem&, const OffloadProblem&) = default;
};

} // namespace slatewise
