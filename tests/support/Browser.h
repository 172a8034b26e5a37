#pragma once

#include <string>

/// A web browser without a screen, to see pages as people see them.
namespace slatewise::test {

/// Opens a page in a window of that width, calls a function with the given body as soon as the page
/// has been read, and gives the text that it returned. Throws with the browser's own words when it
/// returns nothing.
std::string evaluateInBrowser(const std::string& page, const std::string& functionBody,
                              int windowWidth = 1280);

} // namespace slatewise::test
