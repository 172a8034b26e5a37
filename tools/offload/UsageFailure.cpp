#include "UsageFailure.h"

#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Text.h"

#include <CLI/CLI.hpp>

#include <string>
#include <string_view>

namespace slatewise::tool {

namespace {

/// The part of the parser's sentence that names what was typed, or what was not.
std::string subjectOf(const CLI::Error& failure) {
    const std::string sentence = failure.what();
    if (failure.get_name() == "RequiredError")
        return sentence.substr(0, sentence.find(" is required"));
    if (failure.get_name() == "ExtrasError")
        return Text::trimmed(sentence.substr(sentence.find(':') + 1));
    return sentence.substr(0, sentence.find(':'));
}

std::string inTurkish(const CLI::Error& failure) {
    const auto subject = subjectOf(failure);
    if (failure.get_name() == "RequiredError")
        return subject + " eksik";
    if (failure.get_name() == "ExtrasError")
        return "Beklenmeyen sözcük: " + subject;
    if (failure.get_name() == "ArgumentMismatch")
        return subject + " için değer eksik ya da fazla";
    return subject + " için verilen değer geçersiz";
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
