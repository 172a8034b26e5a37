#pragma once

#include <filesystem>
#include <string>

/// A web browser without a screen, to see pages as people see them.
namespace slatewise::test {

/// What the reader wants of pages that can do both.
enum class Appearance { Light, Dark };

/// Opens a page in a window of that width, calls a function with the given body as soon as the page
/// has been read, and gives the text that it returned. Throws with the browser's own words when it
/// returns nothing.
std::string evaluateInBrowser(const std::string& page, const std::string& functionBody,
                              int windowWidth = 1280, Appearance appearance = Appearance::Light);

/// Prints a page into a PDF file, as its own rules for paper say.
void printInBrowser(const std::string& page, const std::filesystem::path& file,
                    Appearance appearance);

} // namespace slatewise::test
