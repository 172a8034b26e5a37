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
    const std::string displayable = Text::displayable(value);
    std::string_view rest = displayable;
    for (std::size_t at; (at = rest.find_first_of("&<>\"")) != std::string_view::npos;
         rest.remove_prefix(at + 1))
        raw(rest.substr(0, at)).raw(entity(rest[at]));
    return raw(rest);
}

} // namespace slatewise
