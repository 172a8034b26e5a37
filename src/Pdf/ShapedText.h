#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// What characters mean for the way text is set: which of them depend on their neighbours, and
/// where a line changes its direction, its script or its font. Without state.
namespace slatewise::ShapedText {

/// Whether the character cannot be set alone: it joins its neighbours, sits on one of them, or runs
/// from right to left.
bool needsShaping(char32_t character);

void append(std::u16string& text, char32_t character);

/// The text with an ellipsis at the end of what one reads, which is at the left after Arabic or
/// Hebrew.
std::u16string withEllipsis(const std::u16string& text);

/// An ICU script number, and the four letters that stand for one.
int scriptOf(char32_t character);
const char* scriptCode(int script);

/// A stretch in one direction, script and font.
struct Part {
    std::size_t start = 0;
    std::size_t length = 0;
    bool isRightToLeft = false;
    int script = 0;
    std::uint16_t font = 0;
};

/// The parts of a line that as a whole runs from left to right, in the order in which they stand on
/// it. `fontFor` chooses the font of a character.
std::vector<Part> parts(const std::u16string& text,
                        const std::function<std::uint16_t(char32_t)>& fontFor);

/// The last boundary between two user-perceived characters before `index`.
std::size_t previousBoundary(const std::u16string& text, std::size_t index);

} // namespace slatewise::ShapedText
