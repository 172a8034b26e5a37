#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

struct _FcFontSet; // NOLINT(bugprone-reserved-identifier): not our name

namespace slatewise {

enum class FontWeight { Regular, Medium, Semibold, Bold };

/// Finds fonts among those installed. For one thread; several finders do not disturb each other.
class FontFinder {
public:
    struct Place {
        std::filesystem::path file;
        /// Among the fonts of a collection.
        unsigned index = 0;

        friend bool operator==(const Place&, const Place&) = default;
    };

    FontFinder();
    ~FontFinder();

    /// The family in that weight, or what comes nearest. Fails with `Error` when there is no font
    /// at all.
    Place find(const std::string& family, FontWeight weight);

    /// A font that has the character. Empty when none has.
    std::optional<Place> findFor(char32_t character);

private:
    struct Release {
        void operator()(_FcFontSet* fonts) const;
    };

    /// All fonts in the order in which the system would have them; looked up when first needed.
    std::unique_ptr<_FcFontSet, Release> fallbacks_;
};

} // namespace slatewise
