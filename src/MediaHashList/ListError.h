#pragma once

#include "Language/SpokenError.h"

#include <filesystem>
#include <string>
#include <utility>

namespace slatewise::MediaHashList {

/// A list of checksums, of whatever kind, that cannot be used, in words of both languages.
class ListError : public SpokenError {
public:
    enum class Reason {
        /// It is something else, or damaged; the subject says where.
        NotAList,
        /// No list is as long as that.
        TooLarge,
        /// It declares entities, of which a line can become a gigabyte.
        DeclaresDocumentType,
        /// A path leads out of the folder that the list is for.
        LeadsOut,
        /// A checksum is none.
        NotAValue,
        /// It is not the one that the chain names.
        NotTheChains,
        /// Whoever wrote it ended before the chain named it.
        NotInChainYet,
        /// The same of the offload that made the copy: nobody knows what else it did not come to.
        OfUnfinishedOffload,
        /// It is not the one that a list further up refers to.
        NotAsReferred,
        /// It does not say the same as the list that was written beside it.
        ListsDisagree,
        /// It holds hashes of a card that was not copied.
        OnlyHashes,
        /// All lists together name no file.
        NothingToCompare,
        /// A file that is no list of ours.
        UnknownFile,
        /// No list belongs to a folder.
        NoList,
        /// The folder that the list is for is not there.
        NoFolder,
        /// A link stands on the way to that folder.
        BehindLink,
        /// Where the folder was, another disk is mounted.
        OtherDisk,
        /// It is of another session than the one that is asked for.
        OtherSession,
        /// Of the session whose folder it is nobody has the reports any more.
        NoReports,
    };

    /// `subject` is the part that is wrong; bytes. `list` is the file, where it is known.
    explicit ListError(Reason reason, std::string subject = {}, std::filesystem::path list = {})
        : SpokenError("list not usable"), reason_(reason), subject_(std::move(subject)),
          list_(std::move(list)) {}

    /// The same of a list that was read from this file.
    ListError in(std::filesystem::path list) const {
        return ListError(reason_, subject_, std::move(list));
    }

    std::string text(L10n l10n) const override;

private:
    Reason reason_;
    std::string subject_;
    std::filesystem::path list_;
};

} // namespace slatewise::MediaHashList
