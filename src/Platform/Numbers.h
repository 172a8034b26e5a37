#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Numbers as people read them, and numbers read from text.
namespace slatewise::Numbers {

/// A byte count with a decimal unit (1 kB is 1000 bytes), as precise as its size deserves:
/// "999 bytes", "12 KB", "1.2 MB", "1.23 GB". The decimal sign is the one of an ICU locale name;
/// the machine's when there is none.
std::string byteCount(std::int64_t bytes, const char* locale = nullptr);

/// The count with the digit grouping of an ICU locale name: "1,234,567" for "en_US".
std::string grouped(std::int64_t count, const char* locale);

/// The shortest decimal text that reads back as the same double, with a fraction: "24.0".
std::string shortest(double value);

/// Rounded half away from zero to so many digits behind the point.
double rounded(double value, int fractionDigits);

/// A finite decimal number, if the whole text is one: "25", "-2.5", "+1e3". The decimal sign is a
/// point in every locale.
std::optional<double> decimal(std::string_view text);

/// The quotient of two decimal numbers, if that is what the text is: "30000/1001". Finite.
std::optional<double> quotient(std::string_view text);

/// A whole number with an optional sign, if the whole text is one and it fits.
std::optional<std::int64_t> whole(std::string_view text);

} // namespace slatewise::Numbers
