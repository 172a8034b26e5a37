#include "Batch/ProgressTexts.h"

#include "Batch/TimeLeft.h"
#include "Language/L10n.h"
#include "Offload/PathSize.h"
#include "Platform/Text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace slatewise::ProgressTexts {

namespace {

double ownFraction(const OffloadPhase& phase) {
    if (isSuccess(phase))
        return 1;
    const auto* figures = figuresOf(phase);
    return figures ? std::clamp(figures->fraction, 0.0, 1.0) : 0;
}

/// One overload for each phase, so that a new one without words does not compile.
struct Title {
    L10n l10n;
    bool isHashing;

    std::string size(std::int64_t bytes) const { return PathSize::format(bytes, l10n.language()); }

    std::string speed(const Phase::Figures& phase) const {
        return PathSize::speed(phase.bytesPerSecond, l10n.language());
    }

    std::string operator()(const Phase::Idle&) const {
        return std::string(isHashing ? l10n.idlePromptHashOnly() : l10n.idlePrompt());
    }
    std::string operator()(const Phase::Scanning& phase) const {
        if (phase.total < 1)
            return std::string(l10n.scanning());
        return l10n.hashing(phase.done, phase.total, Text::visible(phase.file), speed(phase));
    }
    std::string operator()(const Phase::Copying& phase) const {
        return l10n.copying(phase.done, phase.total, Text::visible(phase.file), speed(phase));
    }
    std::string operator()(const Phase::Verifying& phase) const {
        // The file at hand is counted, as while it was copied.
        const int file = std::min(phase.done + 1, phase.total);
        return l10n.verifying(file, phase.total, Text::visible(phase.file), speed(phase));
    }
    std::string operator()(const Phase::Verified& phase) const {
        return phase.disks > 1 ? l10n.verifiedOnDisks(phase.files, phase.disks, size(phase.bytes))
                               : l10n.verified(phase.files, size(phase.bytes));
    }
    std::string operator()(const Phase::Hashed& phase) const { return l10n.hashed(phase.files); }
    std::string operator()(const Phase::Failed& phase) const { return l10n.failed(phase.message); }
};

} // namespace

bool isBusy(const OffloadPhase& phase) {
    return figuresOf(phase) != nullptr;
}

bool isSuccess(const OffloadPhase& phase) {
    return std::holds_alternative<Phase::Verified>(phase) ||
           std::holds_alternative<Phase::Hashed>(phase);
}

bool isFailure(const OffloadPhase& phase) {
    return std::holds_alternative<Phase::Failed>(phase);
}

double fraction(const OffloadPhase& phase, const BatchPosition& position) {
    const double own = ownFraction(phase);
    if (!isBusy(phase) || position.pairCount < 2)
        return own;
    return std::min((own + position.pairIndex) / position.pairCount, 1.0);
}

std::string percent(double fraction) {
    return std::to_string(std::lround(100 * fraction)) + "%";
}

std::string pace(const BatchPace& pace, L10n l10n) {
    std::vector<std::string> parts;
    if (pace.bytes) {
        const auto size = [&](std::int64_t bytes) {
            return PathSize::format(bytes, l10n.language());
        };
        parts.push_back(l10n.bytesOf(size(pace.bytes->done), size(pace.bytes->total)));
    }
    if (pace.left)
        parts.push_back(l10n.timeLeft(clockText(*pace.left)));
    return fmt::format("{}", fmt::join(parts, "  ·  "));
}

std::string title(const OffloadPhase& phase, const BatchPosition& position, L10n l10n,
                  bool isHashing) {
    auto title = std::visit(Title{l10n, isHashing}, phase);
    return position.label.empty() || !isBusy(phase) ? title : position.label + " — " + title;
}

} // namespace slatewise::ProgressTexts
