#include "Reports/HtmlText.h"

#include "Platform/Text.h"

namespace slatewise {

namespace {

/// Empty for a character that stands for itself.
std::string_view entity(char character) {
    switch (character) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    default:
        return {};
    }
}

} // namespace

HtmlText& HtmlText::escaped(std::string_view value) {
    const std::string visible = Text::visible(value);
    const std::string_view text = visible;
    std::size_t told = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto inWords = entity(text[at]);
        if (inWords.empty())
            continue;
        raw(text.substr(told, at - told)).raw(inWords);
        told = at + 1;
    }
    return raw(text.substr(told));
}

HtmlText& HtmlText::escapedLines(std::span<const std::string> values) {
    for (std::size_t line = 0; line < values.size(); ++line)
        raw(line == 0 ? "" : "\n").escaped(values[line]);
    return *this;
}

} // namespace slatewise
