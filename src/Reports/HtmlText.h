#pragma once

#include "Platform/Files/FileSystem.h"

#include <span>
#include <string>
#include <string_view>

namespace slatewise {

/// Hypertext in the making, into which markup goes as it is and everything else escaped. What is no
/// UTF-8 shows as U+FFFD, and a sign stands for what would act on the page unseen. It grows as one
/// string, or passes on what it has soon: a long page then needs no more memory than a short one.
class HtmlText {
public:
    HtmlText() = default;
    /// `sink` must outlive it; `flush` passes on the rest.
    explicit HtmlText(const FileSystem::TextSink& sink) : sink_(&sink) {}

    /// Our own markup, and values that consist of digits and letters.
    HtmlText& raw(std::string_view markup) {
        text_.append(markup);
        if (sink_ && text_.size() >= kPieceBytes)
            flush();
        return *this;
    }

    /// A value from outside or a label: fit for content and for attributes in double quotes.
    HtmlText& escaped(std::string_view value);

    /// Several of them, each on a line of its own.
    HtmlText& escapedLines(std::span<const std::string> values);

    HtmlText& number(long long value) { return raw(std::to_string(value)); }

    void flush() {
        (*sink_)(text_);
        text_.clear();
    }

    std::string take() { return std::move(text_); }

private:
    static constexpr std::size_t kPieceBytes = 1 << 16;

    const FileSystem::TextSink* sink_ = nullptr;
    std::string text_;
};

} // namespace slatewise
