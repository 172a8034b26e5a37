#include "Reports/HtmlText.h"

#include "Platform/Text.h"

namespace slatewise {

namespace {

std::string_view entity(char character) {
    switch (character) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    default:
        return "&quot;";
    }
}

} // namespace

HtmlText& HtmlText::escaped(std::string_view value) {
    const std::string visible = Text::visible(value);
    std::string_view rest = visible;
    for (std::size_t at; (at = rest.find_first_of("&<>\"")) != std::string_view::npos;
         rest.remove_prefix(at + 1))
        raw(rest.substr(0, at)).raw(entity(rest[at]));
    return raw(rest);
}

HtmlText& HtmlText::escapedLines(std::span<const std::string> values) {
    for (std::size_t line = 0; line < values.size(); ++line)
        raw(line == 0 ? "" : "\n").escaped(values[line]);
    return *this;
}

} // namespace slatewise
