#include "ProgressDisplay.h"

#include "Offload/PathSize.h"
#include "Platform/Text.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <variant>

namespace slatewise::tool {

namespace {

using namespace std::chrono_literals;

constexpr auto kBarInterval = 100ms;
constexpr auto kLineInterval = 2s;
constexpr std::size_t kBarWidth = 24;

double fractionOf(const OffloadPhase& phase) {
    if (const auto* copying = std::get_if<Phase::Copying>(&phase))
        return copying->fraction;
    if (const auto* verifying = std::get_if<Phase::Verifying>(&phase))
        return verifying->fraction;
    return 0;
}

std::string bar(double fraction) {
    const auto filled =
        static_cast<std::size_t>(std::lround(fraction * static_cast<double>(kBarWidth)));
    std::string text = "[";
    for (std::size_t cell = 0; cell < kBarWidth; ++cell)
        text += cell < filled ? "█" : "░";
    return text + "]";
}

std::size_t terminalColumns() {
    constexpr std::size_t kUsualColumns = 80;
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col
                                                                             : kUsualColumns;
}

/// A file name must not move the cursor or tear a line in two.
std::string onOneLine(std::string_view name) {
    auto text = Text::displayable(name);
    std::replace_if(
        text.begin(), text.end(), [](char character) { return character >= 0 && character < ' '; },
        ' ');
    return text;
}

} // namespace

ProgressDisplay::ProgressDisplay(const Texts& texts, Output output)
    : texts_(texts), isSilent_(output == Output::ErrorsOnly), isTerminal_(::isatty(STDERR_FILENO)),
      shownKind_(std::variant_npos) {}

void ProgressDisplay::setLabel(std::string label) {
    label_ = std::move(label);
    shownKind_ = std::variant_npos;
}

void ProgressDisplay::show(const OffloadPhase& phase) {
    if (isSilent_)
        return;
    const auto now = std::chrono::steady_clock::now();
    const auto interval = isTerminal_ ? std::chrono::milliseconds(kBarInterval)
                                      : std::chrono::milliseconds(kLineInterval);
    if (phase.index() == shownKind_ && now - shownAt_ < interval) {
        (void)timeLeft_.update(phase, now);
        return;
    }
    shownKind_ = phase.index();
    shownAt_ = now;
    draw(line(phase, now));
}

std::string ProgressDisplay::line(const OffloadPhase& phase,
                                  std::chrono::steady_clock::time_point now) {
    const auto& shared = texts_.shared;
    const auto left = timeLeft_.update(phase, now);
    std::string text;
    if (const auto* copying = std::get_if<Phase::Copying>(&phase)) {
        const auto speed = PathSize::format(static_cast<std::int64_t>(copying->bytesPerSecond),
                                            shared.language()) +
                           "/s";
        text = shared.copying(copying->done, copying->total, onOneLine(copying->file), speed);
    } else if (const auto* verifying = std::get_if<Phase::Verifying>(&phase)) {
        // People count files from one.
        text = shared.verifying(std::min(verifying->done + 1, verifying->total), verifying->total,
                                onOneLine(verifying->file));
    } else {
        text = shared.scanning();
    }
    const double fraction = fractionOf(phase);
    auto prefix = fmt::format("{:3.0f}%  ", std::floor(100 * fraction));
    if (isTerminal_)
        prefix = bar(fraction) + " " + prefix;
    if (left)
        prefix += texts_.timeLeft(clockText(*left)) + "  ·  ";
    if (!label_.empty())
        prefix += label_ + "  ·  ";
    return prefix + text;
}

void ProgressDisplay::draw(const std::string& text) {
    if (isTerminal_) {
        const auto shown = Text::prefix(text, terminalColumns() - 1);
        std::fputs(("\r\x1b[K" + shown).c_str(), stderr);
        hasBar_ = true;
    } else {
        std::fputs((text + "\n").c_str(), stderr);
    }
    std::fflush(stderr);
}

void ProgressDisplay::clearBar() {
    if (hasBar_)
        std::fputs("\r\x1b[K", stderr);
    hasBar_ = false;
}

void ProgressDisplay::finish(std::string_view sentence) {
    if (!isSilent_)
        note(label_.empty() ? std::string(sentence) : label_ + "  ·  " + std::string(sentence));
}

void ProgressDisplay::note(std::string_view sentence) {
    clearBar();
    std::fputs((std::string(sentence) + "\n").c_str(), stderr);
    std::fflush(stderr);
}

} // namespace slatewise::tool
