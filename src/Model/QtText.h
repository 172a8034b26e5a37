#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace slatewise {

/// Text of ours, or a file name, for views. What is no UTF-8 is shown as U+FFFD.
inline QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace slatewise
