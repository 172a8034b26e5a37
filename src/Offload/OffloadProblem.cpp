#include "Offload/OffloadProblem.h"

#include "Platform/Text.h"

namespace slatewise {

OffloadProblem::Severity OffloadProblem::severity() const {
    return kind == Kind::ReadFromMemory ? Severity::Note : Severity::Failure;
}

std::string OffloadProblem::text(L10n l10n) const {
    const auto about = Text::displayable(subject);
    switch (kind) {
    case Kind::CopyStopped:
        return l10n.copyStopped(about, reason);
    case Kind::NotReadBack:
        return l10n.notReadBack(about, reason);
    case Kind::CopyDiffers:
        return l10n.copyDiffers(about);
    case Kind::FolderNotRead:
        return l10n.folderNotRead(about, reason);
    case Kind::NothingReadBack:
        return l10n.nothingReadBack(about, reason);
    case Kind::ReadFromMemory:
        return l10n.readFromMemory(about);
    }
    return reason;
}

} // namespace slatewise
