#include "Offload/OffloadError.h"

#include "Language/L10n.h"
#include "Offload/PathSize.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <new>
#include <string_view>
#include <system_error>

namespace slatewise {

namespace {

struct Describe {
    L10n texts;

    std::string operator()(const OffloadError::SizeMismatch& sizes) const {
        return texts.sizeMismatch(std::to_string(sizes.source), std::to_string(sizes.copied));
    }
    std::string operator()(const OffloadError::EndedEarly& early) const {
        return texts.endedEarly(std::to_string(early.size), std::to_string(early.read));
    }
    std::string operator()(const OffloadError::InsufficientSpace& space) const {
        return texts.insufficientSpace(PathSize::format(space.needed, texts.language()),
                                       PathSize::format(space.free, texts.language()),
                                       Text::displayable(space.disk));
    }
    std::string operator()(const OffloadError::CardGone& gone) const {
        return texts.cardGone(Text::displayable(gone.card));
    }
    std::string operator()(const OffloadError::DiskReplaced& replaced) const {
        return texts.diskReplaced(Text::displayable(replaced.disk));
    }
    std::string operator()(const OffloadError::TemplateLeadsOut& out) const {
        return texts.templateLeadsOut(Text::displayable(out.pathTemplate));
    }
    std::string operator()(const OffloadError::MissingSelection&) const {
        return std::string(texts.missingSelection());
    }
};

/// What goes wrong with cards and disks.
constexpr struct {
    int code;
    std::string_view (L10n::*text)() const;
} kReasons[] = {
    {EEXIST, &L10n::nameTaken},
    {EXDEV, &L10n::otherVolumeThere},
    {ELOOP, &L10n::linkInTheWay},
    {ENOTDIR, &L10n::fileInTheWay},
    {EISDIR, &L10n::folderInTheWay},
    {ENOTEMPTY, &L10n::folderNotEmpty},
    {EIO, &L10n::readOrWriteError},
    {EREMOTEIO, &L10n::readOrWriteError},
    {EUCLEAN, &L10n::fileSystemDamaged},
    {EBADMSG, &L10n::fileSystemDamaged},
    {ENOSPC, &L10n::noRoomLeft},
    {EDQUOT, &L10n::noRoomLeft},
    {EACCES, &L10n::accessDenied},
    {EPERM, &L10n::accessDenied},
    {EROFS, &L10n::readOnlyVolume},
    {ENOENT, &L10n::notThere},
    {ENODEV, &L10n::deviceGone},
    {ENXIO, &L10n::deviceGone},
    {ENOTCONN, &L10n::deviceGone},
    {ECONNABORTED, &L10n::deviceGone},
    {ESTALE, &L10n::deviceGone},
    {ENOMEDIUM, &L10n::noMedium},
    {EBUSY, &L10n::inUse},
    {ENOMEM, &L10n::noMemoryLeft},
    {EMFILE, &L10n::tooManyOpen},
    {ENFILE, &L10n::tooManyOpen},
    {ETIMEDOUT, &L10n::tookTooLong},
    {ENAMETOOLONG, &L10n::nameTooLong},
    {EINVAL, &L10n::notAllowedHere},
    {EILSEQ, &L10n::notAllowedHere},
    {EFBIG, &L10n::fileTooLarge},
};

} // namespace

std::string OffloadError::text(L10n l10n) const {
    return std::visit(Describe{l10n}, reason_);
}

std::string describe(const std::exception& failure, L10n l10n) {
    if (const auto* spoken = dynamic_cast<const SpokenError*>(&failure))
        return spoken->text(l10n);
    if (const auto* ofSystem = dynamic_cast<const PosixError*>(&failure))
        return ofSystem->subject() + ": " + reasonOf(ofSystem->code(), l10n);
    if (const auto* special = dynamic_cast<const NotARegularFile*>(&failure))
        return special->subject() + ": " + std::string(l10n.noRegularFile());
    if (const auto* ofLibrary = dynamic_cast<const std::filesystem::filesystem_error*>(&failure)) {
        return Text::legible(ofLibrary->path1().native()) + ": " +
               reasonOf(ofLibrary->code().value(), l10n);
    }
    if (dynamic_cast<const std::bad_alloc*>(&failure))
        return reasonOf(ENOMEM, l10n);
    return describe(failure);
}

std::string describe(const std::exception_ptr& failure, L10n l10n) {
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& thrown) {
        return describe(thrown, l10n);
    }
}

std::string reasonOf(int code, L10n l10n) {
    const auto known = std::find_if(std::begin(kReasons), std::end(kReasons),
                                    [code](const auto& reason) { return reason.code == code; });
    if (known != std::end(kReasons))
        return std::string((l10n.*known->text)());
    return l10n.isTurkish() ? l10n.systemError(code) : std::generic_category().message(code);
}

} // namespace slatewise
