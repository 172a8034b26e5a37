#include "Language/L10n.h"
#include "Offload/OffloadError.h"
#include "Platform/Text.h"
#include "Verify/TreeCheck.h"

#include <fmt/format.h>

/// What a check has to say, in words.
namespace slatewise::Verify {

namespace {

/// "a.mov, b.mov, …".
std::string namesOf(const Note& note) {
    std::string names;
    for (const auto& path : note.paths)
        names += (names.empty() ? "" : ", ") + Text::visible(path);
    return note.count > static_cast<int>(note.paths.size()) ? names + ", …" : names;
}

} // namespace

std::string Note::text(L10n l10n) const {
    switch (kind) {
    case Kind::LeftOutByRun:
        return fmt::format("{} ({}): {}", l10n.leftOutByRun(), count, namesOf(*this));
    case Kind::OtherReportsNotRead:
        return fmt::format("{}: {} ({})", l10n.otherReportsNotRead(), namesOf(*this),
                           describe(failure, l10n));
    case Kind::LaterReportsPassedOver:
        return fmt::format("{}: {}", l10n.laterReportsPassedOver(), namesOf(*this));
    }
    return {};
}

std::string Finding::explanation(L10n l10n) const {
    if (difference == Difference::Failed)
        return std::string(l10n.itsRunFailed());
    if (failure)
        return describe(failure, l10n);
    if (circumstance == Circumstance::None)
        return {};
    return std::string(circumstance == Circumstance::IsLink ? l10n.itIsALink()
                                                            : l10n.itCameMeanwhile());
}

} // namespace slatewise::Verify
