#pragma once

#include "Language/AppLanguage.h"

namespace CLI {
class App;
}

namespace slatewise::tool {

/// The language that the words ask for, and else the stored one: what is wrong with the words is
/// told before they are read.
AppLanguage languageOf(int count, const char* const* words);

/// Has the program say what is wrong with its usage in one line of sane length, in which whatever
/// was typed acts on no terminal.
void tellUsageFailuresPlainly(CLI::App& program, AppLanguage language);

} // namespace slatewise::tool
