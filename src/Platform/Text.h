#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Operations on UTF-8 text. Input may hold bytes that are no UTF-8 (file names do); only
/// `displayable` changes such bytes, every other operation passes them through.
namespace slatewise::Text {

/// The text with every malformed sequence replaced by U+FFFD, fit for JSON, SQL and a screen.
std::string displayable(std::string_view bytes);

/// The character itself, or a sign in place of one that acts instead of being seen: "␊" for a line
/// feed, U+FFFD for a line separator, a C1 control or what turns the direction of writing.
char32_t visible(char32_t character);

/// The same for all of a text, malformed bytes included, so that no name can tear a line in two,
/// move a cursor, or turn around what stands beside it. For whatever is printed, logged or drawn
/// for a person.
std::string visible(std::string_view bytes);

/// At most `limit` user-perceived characters (at least 3). The middle of a longer text gives way to
/// "…": of a sentence around a path, both ends say most.
std::string shortened(std::string_view text, std::size_t limit);

/// As `displayable`, for a line that people read: of a path, which may be thousands of characters
/// long, the middle is left out.
std::string legible(std::string_view bytes);

/// Without white space, line ends (as Unicode defines them) and byte order marks at both ends.
std::string trimmed(std::string_view text);

/// Every occurrence of `from` (not empty) replaced by `to`.
std::string replaced(std::string_view text, std::string_view from, std::string_view to);

/// A camera label as it is stored and as it becomes part of a path: trimmed, "/" replaced by "-".
std::string pathSafeLabel(std::string_view text);

/// The pieces between `separator`, empty ones left out. Views into `text`.
std::vector<std::string_view> pieces(std::string_view text, char separator);

/// How many user-perceived characters the text has.
std::size_t length(std::string_view text);

/// At most the first `limit` user-perceived characters.
std::string prefix(std::string_view text, std::size_t limit);

/// Lower-cased, ASCII letters only: for hexadecimal digits and other fixed vocabulary.
std::string asciiLowercased(std::string_view text);

/// In the form in which each letter with its accents is as few characters as can be (Unicode's
/// NFC). A text with malformed bytes stays as it is.
std::string composed(std::string_view text);

/// In the form in which texts that differ in case alone are equal, in no language's way.
std::string caseFolded(std::string_view text);

/// Order in which a person expects names: locale-aware, case-insensitive at first, numbers by
/// value. Negative, zero or positive.
int localizedStandardCompare(std::string_view left, std::string_view right);

/// Bytes that compare as `localizedStandardCompare` compares the texts they were made of: to sort
/// many names, each of which is looked at once.
std::string localizedStandardSortKey(std::string_view text);

/// Locale-aware order that takes no notice of case and reads numbers digit by digit. Negative, zero
/// or positive.
int localizedCaseInsensitiveCompare(std::string_view left, std::string_view right);

} // namespace slatewise::Text
