#include "Offload/OffloadError.h"

#include "Offload/PathSize.h"
#include "Platform/Text.h"

#include <cerrno>
#include <system_error>

namespace slatewise {

namespace {

struct Describe {
    L10n texts;

    std::string operator()(const OffloadError::SizeMismatch& sizes) const {
        return texts.sizeMismatch(std::to_string(sizes.source), std::to_string(sizes.copied));
    }
    std::string operator()(const OffloadError::InsufficientSpace& space) const {
        return texts.insufficientSpace(PathSize::format(space.needed, texts.language()),
                                       PathSize::format(space.free, texts.language()));
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

} // namespace

std::string OffloadError::text(L10n l10n) const {
    return std::visit(Describe{l10n}, reason_);
}

std::string OffloadError::localizedDescription() const {
    return text(L10n::current());
}

std::string describe(const std::exception& failure, L10n l10n) {
    if (const auto* ours = dynamic_cast<const OffloadError*>(&failure))
        return ours->text(l10n);
    const auto* ofSystem = dynamic_cast<const PosixError*>(&failure);
    const bool hasClearWords =
        !ofSystem || (ofSystem->code() != EEXIST && ofSystem->code() != EXDEV);
    return hasClearWords ? describe(failure)
                         : ofSystem->subject() + ": " + reasonOf(ofSystem->code(), l10n);
}

std::string reasonOf(int code, L10n l10n) {
    if (code == EEXIST)
        return l10n.nameTaken();
    if (code == EXDEV)
        return l10n.otherVolumeThere();
    return std::generic_category().message(code);
}

} // namespace slatewise
