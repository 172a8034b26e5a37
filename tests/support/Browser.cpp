#include "support/Browser.h"

#include "support/Files.h"
#include "support/Process.h"

#include <QByteArray>

#include <stdexcept>

namespace slatewise::test {

namespace {

const std::string kBegin = "[[result:";
const std::string kEnd = ":result]]";

/// The result replaces the page, so that only it comes back; percent-encoded, since it comes back
/// as hypertext.
std::string scriptFor(const std::string& functionBody) {
    return "<script>{const result = encodeURIComponent((() => {" + functionBody +
           "})());document.documentElement.textContent = '" + kBegin + "' + result + '" + kEnd +
           "';}</script>";
}

/// Opens the page for one purpose, and gives what the browser says.
ProcessResult browse(const std::string& page, std::vector<std::string> purpose,
                     Appearance appearance) {
    const TemporaryFolder folder;
    writeFile(folder / "page.html", page);
    std::vector<std::string> words = {
        "chromium",
        "--headless",
        "--no-sandbox",
        "--disable-gpu",
        "--no-first-run",
        "--disable-background-networking",
        "--disable-component-update",
        "--disable-sync",
        "--user-data-dir=" + (folder / "profile").native(),
        appearance == Appearance::Dark ? "--blink-settings=preferredColorScheme=0" : "--lang=en"};
    words.insert(words.end(), purpose.begin(), purpose.end());
    words.push_back("file://" + (folder / "page.html").native());
    return run(words);
}

} // namespace

std::string evaluateInBrowser(const std::string& page, const std::string& functionBody,
                              int windowWidth, Appearance appearance) {
    const auto result =
        browse(page + scriptFor(functionBody),
               {"--window-size=" + std::to_string(windowWidth) + ",900", "--dump-dom"}, appearance);
    const auto begin = result.standardOutput.find(kBegin);
    const auto end = result.standardOutput.find(kEnd);
    if (begin == std::string::npos || end == std::string::npos)
        throw std::runtime_error("no result from the browser: " + result.standardError);
    const auto at = begin + kBegin.size();
    return QByteArray::fromPercentEncoding(
               QByteArray::fromStdString(result.standardOutput.substr(at, end - at)))
        .toStdString();
}

void printInBrowser(const std::string& page, const std::filesystem::path& file,
                    Appearance appearance) {
    const auto result =
        browse(page, {"--no-pdf-header-footer", "--print-to-pdf=" + file.native()}, appearance);
    if (!std::filesystem::exists(file))
        throw std::runtime_error("no print from the browser: " + result.standardError);
}

} // namespace slatewise::test
