#include "Offload/OffloadError.h"

#include "Language/L10n.h"
#include "Offload/PathSize.h"
#include "Platform/Text.h"

namespace slatewise {

namespace {

struct Describe {
    L10n texts;

    std::string operator()(const OffloadError::SizeMismatch& sizes) const {
        return texts.sizeMismatch(std::to_string(sizes.source), std::to_string(sizes.copied));
    }
    std::string operator()(const OffloadError::HashMismatch& mismatch) const {
        return texts.hashMismatch(mismatch.path);
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
    std::string operator()(const OffloadError::MissingUnit&) const {
        return std::string(texts.missingUnit());
    }
    std::string operator()(const OffloadError::NotAppleSilicon&) const {
        return std::string(texts.notAppleSilicon());
    }
    std::string operator()(const OffloadError::Cancelled&) const {
        return std::string(texts.cancelled());
    }
};

} // namespace

std::string OffloadError::localizedDescription() const {
    return std::visit(Describe{L10n::current()}, reason_);
}

} // namespace slatewise
