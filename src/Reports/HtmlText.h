#pragma once

#include <string>
#include <string_view>

namespace slatewise {

/// Hypertext in the making: one growing string, into which markup goes as it is and everything else
/// escaped. What is no UTF-8 shows as U+FFFD.
class HtmlText {
public:
    /// Our own markup, and values that consist of digits and letters.
    HtmlText& raw(std::string_view markup) {
        text_.append(markup);
        return *this;
    }

    /// A value from outside or a label: fit for content and for attributes in double quotes.
    HtmlText& escaped(std::string_view value);

    HtmlText& number(long long value) { return raw(std::to_string(value)); }

    void reserve(std::size_t bytes) { text_.reserve(bytes); }
    const std::string& text() const { return text_; }
    std::string take() { return std::move(text_); }

private:
    std::string text_;
};

} // namespace slatewise
