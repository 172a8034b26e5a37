#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <string>

namespace slatewise {

/// A universally unique identifier. A value; a default one is all zero.
class Uuid {
public:
    Uuid() = default;

    /// A new random one (version 4).
    static Uuid random();

    /// Lower-case text with hyphens, 36 characters.
    std::string text() const;

    friend auto operator<=>(const Uuid&, const Uuid&) = default;

private:
    std::array<std::uint8_t, 16> bytes_{};
};

} // namespace slatewise
