#include "UsageFailure.h"

#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Text.h"

#include <CLI/CLI.hpp>

#include <string>
#include <string_view>

namespace slatewise::tool {

namespace {

/// In the words of the parser's sentence that name what was typed, or what was not.
std::string inTurkish(const CLI::Error& failure) {
    const std::string sentence = failure.what();
    const auto colon = sentence.find(':');
    // Some failures bear the program's name in place of their own.
    switch (static_cast<CLI::ExitCodes>(failure.get_exit_code())) {
    case CLI::ExitCodes::RequiredError:
        return sentence.substr(0, sentence.find(" is required")) + " eksik";
    case CLI::ExitCodes::ExtrasError:
        return "Beklenmeyen sözcük: " + Text::trimmed(sentence.substr(colon + 1));
    case CLI::ExitCodes::ArgumentMismatch:
        return sentence.substr(0, colon) + " için değer eksik ya da fazla";
    default:
        return sentence.substr(0, colon) + " için verilen değer geçersiz";
    }
}

std::string sentence(const CLI::App& program, const CLI::Error& failure, AppLanguage language) {
    constexpr std::size_t kLongestSentence = 400;
    const bool isTurkish = language == AppLanguage::Turkish;
    const std::string words = isTurkish ? inTurkish(failure) : failure.what();
    return Text::shortened(Text::visible(words), kLongestSentence) + "\n" +
           (isTurkish ? "Ayrıntılar için: " + program.get_name() + " --help\n"
                      : "Run " + program.get_name() + " --help for more information.\n");
}

} // namespace

AppLanguage languageOf(int count, const char* const* words) {
    constexpr std::string_view kOption = "--language";
    std::string wanted;
    for (int at = 1; at < count; ++at) {
        const std::string_view word = words[at];
        if (word == kOption && at + 1 < count)
            wanted = words[at + 1];
        else if (word.starts_with(std::string(kOption) + "="))
            wanted = word.substr(kOption.size() + 1);
    }
    for (const auto language : Language::allCases) {
        if (Language::rawValue(language) == wanted)
            return language;
    }
    return Language::load(UserDefaults::standard());
}

void tellUsageFailuresPlainly(CLI::App& program, AppLanguage language) {
    program.failure_message([language](const CLI::App* of, const CLI::Error& failure) {
        return sentence(*of, failure, language);
    });
}

} // namespace slatewise::tool
