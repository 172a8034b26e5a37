#pragma once

#include "Language/L10n.h"
#include "Verify/TreeCheck.h"

#include <string>
#include <string_view>

namespace slatewise::tool {

/// The sentences that only this program says, in both languages.
class VerifyTexts {
public:
    explicit VerifyTexts(AppLanguage language) : shared(language) {}

    /// The verdict on one tree.
    std::string verdict(const Verify::Result& result, std::string_view tree) const;
    /// The lists speak of another disk, of which this one may well be a copy.
    std::string onOtherDisk(std::string_view tree) const;
    std::string fromMemory(std::string_view tree) const;
    /// That of these files.
    std::string keptInMemory(const Verify::Result& result, std::string_view tree) const;
    std::string nameLeftOut(std::string_view name) const;
    std::string noGeneration() const;

    /// The texts of the application.
    L10n shared;
};

} // namespace slatewise::tool
