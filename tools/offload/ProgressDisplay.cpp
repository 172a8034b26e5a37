#include "ProgressDisplay.h"

#include "Offload/PathSize.h"
#include "Platform/Text.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <variant>

namespace slatewise::tool {

namespace {

using namespace std::chrono_literals;

constexpr auto kBarInterval = 100ms;
constexpr auto kLineInterval = 2s;
/// A bar this wide needs a terminal that wide, else the words lose their place.
constexpr std::size_t kWideBar = 24;
constexpr std::size_t kNarrowBar = 10;
constexpr std::size_t kColumnsForWideBar = 120;
/// A file name is not shortened further than to this many columns.
constexpr std::size_t kShortestName = 12;

double fractionOf(const OffloadPhase& phase) {
    if (const auto* copying = std::get_if<Phase::Copying>(&phase))
        return copying->fraction;
    if (const auto* verifying = std::get_if<Phase::Verifying>(&phase))
        return verifying->fraction;
    return 0;
}

std::string bar(double fraction, std::size_t width) {
    const auto filled =
        static_cast<std::size_t>(std::lround(fraction * static_cast<double>(width)));
    std::string text = "[";
    for (std::size_t cell = 0; cell < width; ++cell)
        text += cell < filled ? "█" : "░";
    return text + "]";
}

bool startsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xc0) != 0x80;
}

/// Columns a text takes, as near as counting characters comes to it.
std::size_t columnsOf(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), startsCharacter));
}

/// The end of a path says more than its beginning.
std::string shortenedBy(const std::string& name, std::size_t columns) {
    const auto length = columnsOf(name);
    if (columns == 0 || length <= kShortestName)
        return name;
    auto drop = std::min(columns + 1, length - kShortestName + 1);
    auto at = name.begin();
    while (at != name.end() && (drop > 0 || !startsCharacter(*at))) {
        if (startsCharacter(*at))
            --drop;
        ++at;
    }
    return "…" + std::string(at, name.end());
}

std::size_t terminalColumns() {
    constexpr std::size_t kUsualColumns = 80;
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col
                                                                             : kUsualColumns;
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
    const double fraction = fractionOf(phase);
    auto prefix = fmt::format("{:3.0f}%  ", std::floor(100 * fraction));
    if (const auto left = timeLeft_.update(phase, now))
        prefix += texts_.timeLeft(clockText(*left)) + "  ·  ";
    if (!label_.empty())
        prefix += label_ + "  ·  ";
    if (!isTerminal_)
        return prefix + words(phase, 0);

    const auto columns = terminalColumns();
    prefix = bar(fraction, columns < kColumnsForWideBar ? kNarrowBar : kWideBar) + " " + prefix;
    const auto needed = columnsOf(prefix) + columnsOf(words(phase, 0));
    return prefix + words(phase, needed < columns ? 0 : needed - columns + 1);
}

std::string ProgressDisplay::words(const OffloadPhase& phase, std::size_t columnsTooMany) const {
    const auto& shared = texts_.shared;
    if (const auto* copying = std::get_if<Phase::Copying>(&phase)) {
        const auto speed = PathSize::format(static_cast<std::int64_t>(copying->bytesPerSecond),
                                            shared.language()) +
                           "/s";
        return shared.copying(copying->done, copying->total,
                              shortenedBy(Text::onOneLine(copying->file), columnsTooMany), speed);
    }
    if (const auto* verifying = std::get_if<Phase::Verifying>(&phase)) {
        // People count files from one.
        return shared.verifying(std::min(verifying->done + 1, verifying->total), verifying->total,
                                shortenedBy(Text::onOneLine(verifying->file), columnsTooMany));
    }
    return std::string(shared.scanning());
}

void ProgressDisplay::draw(const std::string& text) {
    if (isTerminal_) {
        const auto shown = Text::prefix(text, terminalColumns() - 1);
        std::cerr << "\r\x1b[K" << shown;
        hasBar_ = true;
    } else {
        std::cerr << text << '\n';
    }
}

void ProgressDisplay::clearBar() {
    if (hasBar_)
        std::cerr << "\r\x1b[K";
    hasBar_ = false;
}

void ProgressDisplay::finish(std::string_view sentence) {
    if (!isSilent_)
        note(label_.empty() ? std::string(sentence) : label_ + "  ·  " + std::string(sentence));
}

void ProgressDisplay::note(std::string_view sentence) {
    clearBar();
    std::cerr << sentence << '\n';
}

} // namespace slatewise::tool
