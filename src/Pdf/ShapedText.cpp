#include "Pdf/ShapedText.h"

#include <unicode/brkiter.h>
#include <unicode/ubidi.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <memory>

namespace slatewise::ShapedText {

namespace {

constexpr char32_t kDelete = 0x7F;

UScriptCode script(char32_t character) {
    UErrorCode status = U_ZERO_ERROR;
    return uscript_getScript(static_cast<UChar32>(character), &status);
}

bool isMark(char32_t character) {
    return (U_GET_GC_MASK(static_cast<UChar32>(character)) & U_GC_M_MASK) != 0;
}

/// Characters of these scripts stand side by side, each for itself.
bool standsAlone(UScriptCode code) {
    switch (code) {
    case USCRIPT_COMMON:
    case USCRIPT_LATIN:
    case USCRIPT_GREEK:
    case USCRIPT_CYRILLIC:
    case USCRIPT_ARMENIAN:
    case USCRIPT_GEORGIAN:
    case USCRIPT_HAN:
    case USCRIPT_HIRAGANA:
    case USCRIPT_KATAKANA:
    case USCRIPT_BOPOMOFO:
        return true;
    default:
        return false;
    }
}

bool isHangulSyllable(char32_t character) {
    return character >= 0xAC00 && character <= 0xD7A3;
}

bool isRightToLeft(UCharDirection direction) {
    return direction == U_RIGHT_TO_LEFT || direction == U_RIGHT_TO_LEFT_ARABIC;
}

/// Slashes part a line: folders follow each other from left to right however their names run.
UCharDirection directionInPaths(const void* /*context*/, UChar32 character) {
    return character == '/' ? U_SEGMENT_SEPARATOR
                            : static_cast<UCharDirection>(U_BIDI_CLASS_DEFAULT);
}

/// Splits a run of one direction by script and font, in reading order.
void splitRun(const std::u16string& text, Part run,
              const std::function<std::uint16_t(char32_t)>& fontFor, std::vector<Part>& result) {
    const auto runEnd = run.start + run.length;
    Part current = run;
    current.length = 0;
    current.script = USCRIPT_COMMON;
    for (auto at = run.start; at < runEnd;) {
        const auto start = at;
        UChar32 character = 0;
        U16_NEXT(text.data(), at, runEnd, character);
        const auto code = static_cast<char32_t>(character);
        const auto own = script(code);
        const bool isNeutral = own == USCRIPT_COMMON || own == USCRIPT_INHERITED;
        // A mark goes with the letter below it, and what is invisible with its neighbour.
        const bool follows =
            current.length > 0 &&
            (isMark(code) || u_hasBinaryProperty(character, UCHAR_DEFAULT_IGNORABLE_CODE_POINT));
        const auto font = follows ? current.font : fontFor(code);
        const bool isOtherScript =
            !isNeutral && current.script != USCRIPT_COMMON && current.script != own;
        if (current.length > 0 && (font != current.font || isOtherScript)) {
            result.push_back(current);
            current = {.start = start,
                       .length = 0,
                       .isRightToLeft = run.isRightToLeft,
                       .script = USCRIPT_COMMON,
                       .font = font};
        }
        current.font = font;
        if (!isNeutral)
            current.script = own;
        current.length = at - current.start;
    }
    if (current.length > 0)
        result.push_back(current);
}

} // namespace

bool needsShaping(char32_t character) {
    if (character < kDelete)
        return false;
    const auto value = static_cast<UChar32>(character);
    const auto direction = u_charDirection(value);
    if (isRightToLeft(direction) || direction == U_ARABIC_NUMBER)
        return true;
    if (isMark(character) || u_hasBinaryProperty(value, UCHAR_DEFAULT_IGNORABLE_CODE_POINT))
        return true;
    return !standsAlone(script(character)) && !isHangulSyllable(character);
}

void append(std::u16string& text, char32_t character) {
    if (character <= 0xFFFF) {
        text += static_cast<char16_t>(character);
        return;
    }
    text += static_cast<char16_t>(U16_LEAD(character));
    text += static_cast<char16_t>(U16_TRAIL(character));
}

std::u16string withEllipsis(const std::u16string& text) {
    constexpr char16_t kRightToLeftMark = 0x200F;
    auto at = text.size();
    while (at > 0) {
        UChar32 character = 0;
        U16_PREV(text.data(), 0, at, character);
        const auto direction = u_charDirection(character);
        if (direction == U_LEFT_TO_RIGHT)
            break;
        if (isRightToLeft(direction))
            return text + u'…' + kRightToLeftMark;
    }
    return text + u'…';
}

int scriptOf(char32_t character) {
    return script(character);
}

const char* scriptCode(int code) {
    // Signs without a script of their own are set as in the text that most names are made of.
    if (code == USCRIPT_COMMON || code == USCRIPT_INHERITED)
        return "Latn";
    const char* letters = uscript_getShortName(static_cast<UScriptCode>(code));
    return letters ? letters : "Latn";
}

std::vector<Part> parts(const std::u16string& text,
                        const std::function<std::uint16_t(char32_t)>& fontFor) {
    std::vector<Part> result;
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UBiDi, decltype(&ubidi_close)> bidi(ubidi_open(), &ubidi_close);
    ubidi_setClassCallback(bidi.get(), directionInPaths, nullptr, nullptr, nullptr, &status);
    ubidi_setPara(bidi.get(), text.data(), static_cast<std::int32_t>(text.size()), UBIDI_LTR,
                  nullptr, &status);
    const auto count = ubidi_countRuns(bidi.get(), &status);
    for (std::int32_t index = 0; U_SUCCESS(status) && index < count; ++index) {
        std::int32_t start = 0;
        std::int32_t length = 0;
        const auto direction = ubidi_getVisualRun(bidi.get(), index, &start, &length);
        const auto first = static_cast<std::ptrdiff_t>(result.size());
        splitRun(text,
                 {.start = static_cast<std::size_t>(start),
                  .length = static_cast<std::size_t>(length),
                  .isRightToLeft = direction == UBIDI_RTL},
                 fontFor, result);
        if (direction == UBIDI_RTL)
            std::reverse(result.begin() + first, result.end());
    }
    return result;
}

std::size_t previousBoundary(const std::u16string& text, std::size_t index) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> characters(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status) || index == 0)
        return index == 0 ? 0 : index - 1;
    characters->setText(
        icu::UnicodeString(false, text.data(), static_cast<std::int32_t>(text.size())));
    const auto boundary = characters->preceding(static_cast<std::int32_t>(index));
    return boundary == icu::BreakIterator::DONE ? 0 : static_cast<std::size_t>(boundary);
}

} // namespace slatewise::ShapedText
