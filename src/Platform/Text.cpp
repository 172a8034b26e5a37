#include "Platform/Text.h"

#include "Platform/Error.h"

#include <unicode/brkiter.h>
#include <unicode/coll.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <memory>

namespace slatewise::Text {

namespace {

constexpr char kDelete = 0x7F;

icu::UnicodeString toUnicode(std::string_view text) {
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

/// Finds the user-perceived characters of a text that outlives it.
std::unique_ptr<icu::BreakIterator> graphemesOf(const icu::UnicodeString& text) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> graphemes(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status))
        throw Error(std::string("ICU has no rules for characters: ") + u_errorName(status));
    graphemes->setText(text);
    return graphemes;
}

// The library's macros narrow on purpose.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"

/// The character at `at`, which moves behind it; negative where the bytes are malformed.
UChar32 nextCharacter(std::string_view text, std::int32_t& at) {
    UChar32 character;
    U8_NEXT(text.data(), at, static_cast<std::int32_t>(text.size()), character);
    return character;
}

/// The character before `at`, which moves to its start.
UChar32 previousCharacter(std::string_view text, std::int32_t& at) {
    UChar32 character;
    U8_PREV(text.data(), 0, at, character);
    return character;
}

#pragma GCC diagnostic pop

/// Unicode has taken the blank of no width off its list of white space, where it still stands at
/// the ends of texts as the mark of their encoding.
bool isBlank(UChar32 character) {
    constexpr UChar32 kByteOrderMark = 0xFEFF;
    return character >= 0 && (u_isUWhiteSpace(character) || character == kByteOrderMark);
}

/// Whether a character turns the direction of what follows it.
bool steersDirection(UChar32 character) {
    switch (u_charDirection(character)) {
    case U_LEFT_TO_RIGHT_EMBEDDING:
    case U_RIGHT_TO_LEFT_EMBEDDING:
    case U_LEFT_TO_RIGHT_OVERRIDE:
    case U_RIGHT_TO_LEFT_OVERRIDE:
    case U_POP_DIRECTIONAL_FORMAT:
    case U_LEFT_TO_RIGHT_ISOLATE:
    case U_RIGHT_TO_LEFT_ISOLATE:
    case U_FIRST_STRONG_ISOLATE:
    case U_POP_DIRECTIONAL_ISOLATE:
        return true;
    default:
        return false;
    }
}

bool isPlainAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char character) { return character >= ' ' && character < kDelete; });
}

bool isValidUtf8(std::string_view text) {
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::int32_t at = 0; at < length;) {
        if (nextCharacter(text, at) < 0)
            return false;
    }
    return true;
}

/// Null when the library has none.
std::unique_ptr<icu::Collator> makeCollator(UColAttribute attribute, UColAttributeValue value) {
    UErrorCode status = U_ZERO_ERROR;
    // A machine that is set to no language at all orders by code point, capitals first; the
    // order that all languages share is closer to what a person expects.
    const icu::Locale machine = icu::Locale::getDefault();
    const bool isWithoutLanguage = std::string_view(machine.getName()) == "en_US_POSIX";
    std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(
        isWithoutLanguage ? icu::Locale::getRoot() : machine, status));
    if (U_FAILURE(status))
        return nullptr;
    collator->setAttribute(attribute, value, status);
    return collator;
}

/// The calling thread's own, since a collator is no thing to share. Null when there is none.
const icu::Collator* numericCollator() {
    thread_local const auto collator = makeCollator(UCOL_NUMERIC_COLLATION, UCOL_ON);
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): it lives as long as its thread.
    return collator.get();
}

int compare(const icu::Collator* collator, std::string_view left, std::string_view right) {
    if (!collator)
        return left.compare(right);
    UErrorCode status = U_ZERO_ERROR;
    return collator->compareUTF8(
        icu::StringPiece(left.data(), static_cast<std::int32_t>(left.size())),
        icu::StringPiece(right.data(), static_cast<std::int32_t>(right.size())), status);
}

} // namespace

std::string displayable(std::string_view bytes) {
    if (isValidUtf8(bytes))
        return std::string(bytes);
    std::string text;
    toUnicode(bytes).toUTF8String(text);
    return text;
}

char32_t visible(char32_t character) {
    constexpr char32_t kControlPictures = 0x2400;
    constexpr char32_t kDeletePicture = 0x2421;
    constexpr char32_t kReplacement = 0xFFFD;
    constexpr auto kUnseen = U_GC_CC_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK | U_GC_CS_MASK;
    if (character < ' ')
        return kControlPictures + character;
    if (character < kDelete)
        return character;
    if (character == kDelete)
        return kDeletePicture;
    const auto value = static_cast<UChar32>(character);
    return (U_GET_GC_MASK(value) & kUnseen) != 0 || steersDirection(value) ? kReplacement
                                                                           : character;
}

std::string visible(std::string_view bytes) {
    if (isPlainAscii(bytes))
        return std::string(bytes);
    auto text = toUnicode(bytes);
    for (std::int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1)) {
        const auto character = static_cast<char32_t>(text.char32At(at));
        const auto shown = visible(character);
        if (shown != character)
            text.replace(at, U16_LENGTH(character), static_cast<UChar32>(shown));
    }
    std::string result;
    text.toUTF8String(result);
    return result;
}

std::string shortened(std::string_view text, std::size_t limit) {
    if (text.size() <= limit)
        return std::string(text);
    const auto characters = length(text);
    if (characters <= limit)
        return std::string(text);
    const auto head = prefix(text, limit / 2);
    const auto upToTail = prefix(text, characters - (limit - limit / 2 - 1));
    return head + "…" + std::string(text.substr(upToTail.size()));
}

std::string legible(std::string_view bytes) {
    constexpr std::size_t kLongest = 240;
    return shortened(displayable(bytes), kLongest);
}

std::string trimmed(std::string_view text) {
    const auto length = static_cast<std::int32_t>(text.size());
    std::int32_t start = 0;
    for (std::int32_t at = start; at < length && isBlank(nextCharacter(text, at));)
        start = at;
    std::int32_t end = length;
    for (std::int32_t at = end; at > start && isBlank(previousCharacter(text, at));)
        end = at;
    return std::string(
        text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start)));
}

std::string replaced(std::string_view text, std::string_view from, std::string_view to) {
    std::string result;
    result.reserve(text.size());
    std::size_t at = 0;
    for (std::size_t hit; (hit = text.find(from, at)) != std::string_view::npos;
         at = hit + from.size()) {
        result.append(text.substr(at, hit - at)).append(to);
    }
    return result.append(text.substr(at));
}

std::string pathSafeLabel(std::string_view text) {
    return replaced(trimmed(text), "/", "-");
}

std::vector<std::string_view> pieces(std::string_view text, char separator) {
    std::vector<std::string_view> result;
    while (!text.empty()) {
        const auto end = std::min(text.find(separator), text.size());
        if (end > 0)
            result.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result;
}

std::size_t length(std::string_view text) {
    const icu::UnicodeString characters = toUnicode(text);
    const auto graphemes = graphemesOf(characters);
    std::size_t count = 0;
    while (graphemes->next() != icu::BreakIterator::DONE)
        ++count;
    return count;
}

std::string prefix(std::string_view text, std::size_t limit) {
    if (text.size() <= limit)
        return std::string(text);
    const icu::UnicodeString characters = toUnicode(text);
    const std::int32_t end = graphemesOf(characters)->next(static_cast<std::int32_t>(limit));
    if (end == icu::BreakIterator::DONE)
        return std::string(text);
    std::string result;
    characters.tempSubString(0, end).toUTF8String(result);
    return result;
}

std::string asciiLowercased(std::string_view text) {
    std::string result(text);
    for (char& character : result) {
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    }
    return result;
}

std::string composed(std::string_view text) {
    if (!isValidUtf8(text))
        return std::string(text);
    UErrorCode status = U_ZERO_ERROR;
    const auto* const form = icu::Normalizer2::getNFCInstance(status);
    std::string result;
    if (U_SUCCESS(status))
        form->normalize(toUnicode(text), status).toUTF8String(result);
    if (U_FAILURE(status))
        throw Error(std::string("ICU cannot compose a text: ") + u_errorName(status));
    return result;
}

std::string caseFolded(std::string_view text) {
    std::string result;
    toUnicode(text).foldCase().toUTF8String(result);
    return result;
}

int localizedStandardCompare(std::string_view left, std::string_view right) {
    return compare(numericCollator(), left, right);
}

int localizedCaseInsensitiveCompare(std::string_view left, std::string_view right) {
    thread_local const auto collator = makeCollator(UCOL_STRENGTH, UCOL_SECONDARY);
    return compare(collator.get(), left, right);
}

std::string localizedStandardSortKey(std::string_view text) {
    const auto* collator = numericCollator();
    if (!collator)
        return std::string(text);
    const icu::UnicodeString characters = toUnicode(text);
    std::string key(3 * text.size() + 16, '\0');
    const auto fill = [&] {
        return static_cast<std::size_t>(
            collator->getSortKey(characters, reinterpret_cast<std::uint8_t*>(key.data()),
                                 static_cast<std::int32_t>(key.size())));
    };
    const auto size = fill();
    const bool fits = size <= key.size();
    key.resize(size);
    if (!fits)
        fill();
    return key;
}

} // namespace slatewise::Text
