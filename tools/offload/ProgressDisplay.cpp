#include "ProgressDisplay.h"

#include "Offload/PathSize.h"
#include "Platform/Text.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <string>
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
constexpr std::size_t kShortestName = 6;
/// Of a sentence, in characters. Paths may have thousands.
constexpr std::size_t kLongestSentence = 400;

const std::string kBetween = " · ";
constexpr std::string_view kClearLine = "\r\x1b[K";
/// A line that is too wide after all, as with wide characters, is cut by the terminal: one that
/// wrapped could not be drawn over.
constexpr std::string_view kWrapOff = "\x1b[?7l";
constexpr std::string_view kWrapOn = "\x1b[?7h";

/// In one piece, so that it comes neither apart nor out of order where others write too. Whoever
/// watched may be gone.
void write(const std::string& text) {
    for (std::string_view left = text; !left.empty();) {
        const auto count = ::write(STDERR_FILENO, left.data(), left.size());
        if (count <= 0 && errno != EINTR)
            return;
        left.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
}

/// Where the words change, they are shown at once.
std::size_t kindOf(const OffloadPhase& phase) {
    const auto* const figures = figuresOf(phase);
    return 2 * phase.index() + (figures && figures->total > 0 ? 1 : 0);
}

std::string bar(double fraction, std::size_t width) {
    const auto filled =
        static_cast<std::size_t>(std::lround(fraction * static_cast<double>(width)));
    std::string text = "[";
    for (std::size_t cell = 0; cell < width; ++cell)
        text += cell < filled ? "█" : "░";
    return text + "] ";
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

/// How much of all bytes is done, behind other figures; empty while nobody knows.
std::string bytesOf(const Phase::Figures& figures, const L10n& l10n) {
    if (figures.bytesTotal < 1)
        return {};
    return kBetween + l10n.bytesOf(PathSize::format(figures.bytesDone, l10n.language()),
                                   PathSize::format(figures.bytesTotal, l10n.language()));
}

std::size_t terminalColumns() {
    constexpr std::size_t kUsualColumns = 80;
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col
                                                                             : kUsualColumns;
}

/// What is being done, and with which file.
struct Words {
    std::string deed;
    std::string file;
};

Words wordsFor(const OffloadPhase& phase, const Texts& texts) {
    if (const auto* copying = std::get_if<Phase::Copying>(&phase))
        return {texts.copying(copying->done, copying->total), Text::visible(copying->file)};
    if (const auto* verifying = std::get_if<Phase::Verifying>(&phase)) {
        // People count files from one.
        return {texts.verifying(std::min(verifying->done + 1, verifying->total), verifying->total),
                Text::visible(verifying->file)};
    }
    if (const auto* figures = figuresOf(phase); figures && figures->total > 0)
        return {texts.hashing(figures->done, figures->total), Text::visible(figures->file)};
    return {std::string(texts.searching()), ""};
}

} // namespace

ProgressDisplay::ProgressDisplay(const Texts& texts, Output output)
    : texts_(texts), isSilent_(output == Output::ErrorsOnly), isTerminal_(::isatty(STDERR_FILENO)),
      shownKind_(std::variant_npos) {}

void ProgressDisplay::setLabel(const std::string& label) {
    const std::lock_guard guard(lock_);
    label_ = Text::visible(label);
    shownKind_ = std::variant_npos;
}

void ProgressDisplay::show(const OffloadPhase& phase) {
    if (isSilent_)
        return;
    const std::lock_guard guard(lock_);
    const auto now = std::chrono::steady_clock::now();
    const auto interval = isTerminal_ ? std::chrono::milliseconds(kBarInterval)
                                      : std::chrono::milliseconds(kLineInterval);
    const auto kind = kindOf(phase);
    if (kind == shownKind_ && now - shownAt_ < interval) {
        (void)timeLeft_.update(phase, now);
        return;
    }
    shownKind_ = kind;
    shownAt_ = now;
    draw(line(phase, now));
}

/// The figures come first, since a narrow terminal cuts the end.
std::string ProgressDisplay::line(const OffloadPhase& phase,
                                  std::chrono::steady_clock::time_point now) {
    const auto* const known = figuresOf(phase);
    const auto figures = known ? *known : Phase::Figures();
    const auto words = wordsFor(phase, texts_);
    const auto columns = terminalColumns();
    std::string text;
    if (isTerminal_)
        text = bar(figures.fraction, columns < kColumnsForWideBar ? kNarrowBar : kWideBar);
    text += fmt::format("{:3.0f}%", std::floor(100 * figures.fraction));
    if (const auto left = timeLeft_.update(phase, now))
        text += kBetween + texts_.shared.timeLeft(clockText(*left));
    if (figures.total > 0)
        text += kBetween + PathSize::speed(figures.bytesPerSecond, texts_.shared.language());
    const auto pair = (label_.empty() ? "" : kBetween + label_) + kBetween + words.deed;
    // What is being done, and with what, says more than these.
    const auto bytes = bytesOf(figures, texts_.shared);
    if (!isTerminal_ || columnsOf(text) + columnsOf(bytes) + columnsOf(pair) < columns)
        text += bytes;
    text += pair;
    if (words.file.empty())
        return text;
    text += kBetween;
    const auto needed = columnsOf(text) + columnsOf(words.file) + 1;
    return text + shortenedBy(words.file, isTerminal_ && needed > columns ? needed - columns : 0);
}

void ProgressDisplay::draw(const std::string& text) {
    if (!isTerminal_)
        return write(text + "\n");
    hasBar_ = true;
    write(fmt::format("{}{}{}{}", kClearLine, kWrapOff, Text::prefix(text, terminalColumns() - 1),
                      kWrapOn));
}

void ProgressDisplay::inform(std::string_view sentence) {
    if (!isSilent_)
        note(sentence);
}

void ProgressDisplay::note(std::string_view sentence) {
    const std::lock_guard guard(lock_);
    const auto text = Text::shortened(Text::visible(sentence), kLongestSentence) + "\n";
    write(hasBar_ ? std::string(kClearLine) + text : text);
    hasBar_ = false;
}

void ProgressDisplay::clearBar() {
    const std::lock_guard guard(lock_);
    if (hasBar_)
        write(std::string(kClearLine));
    hasBar_ = false;
}

} // namespace slatewise::tool
