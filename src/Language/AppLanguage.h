#pragma once

#include <array>
#include <string_view>

namespace slatewise {

class UserDefaults;

/// The languages of the interface and of the reports, in the order in which a user is offered them.
enum class AppLanguage { English, Turkish };

namespace Language {

inline constexpr std::array<AppLanguage, 2> allCases = {AppLanguage::English, AppLanguage::Turkish};

/// As stored and as named on a command line: "en" or "tr".
std::string_view rawValue(AppLanguage language);

/// The language's own name for itself.
std::string_view displayName(AppLanguage language);

/// The ICU name of the locale by which its reports write dates and numbers.
const char* locale(AppLanguage language);

/// The stored language, English when none or an unknown one is stored. Never fails.
AppLanguage load(const UserDefaults& defaults);

void persist(AppLanguage language, UserDefaults& defaults);

} // namespace Language

} // namespace slatewise
