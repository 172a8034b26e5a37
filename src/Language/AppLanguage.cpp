#include "Language/AppLanguage.h"

#include "Platform/Desktop/UserDefaults.h"

namespace slatewise::Language {

namespace {
constexpr std::string_view kStoredUnder = "appLanguage";
} // namespace

std::string_view rawValue(AppLanguage language) {
    return language == AppLanguage::Turkish ? "tr" : "en";
}

std::string_view displayName(AppLanguage language) {
    return language == AppLanguage::Turkish ? "Türkçe" : "English";
}

const char* locale(AppLanguage language) {
    return language == AppLanguage::Turkish ? "tr_TR" : "en_US";
}

AppLanguage load(const UserDefaults& defaults) {
    const auto stored = defaults.value(kStoredUnder);
    return stored == rawValue(AppLanguage::Turkish) ? AppLanguage::Turkish : AppLanguage::English;
}

void persist(AppLanguage language, UserDefaults& defaults) {
    defaults.setValue(kStoredUnder, rawValue(language));
}

} // namespace slatewise::Language
