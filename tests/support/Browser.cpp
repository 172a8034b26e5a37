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

} // namespace

std::string evaluateInBrowser(const std::string& page, const std::string& functionBody,
                              int windowWidth) {
    const TemporaryFolder folder;
    writeFile(folder / "page.html", page + scriptFor(functionBody));
    const auto size = "--window-size=" + std::to_string(windowWidth) + ",900";
    const auto profile = "--user-data-dir=" + (folder / "profile").native();
    const auto result =
        run({"chromium", "--headless", "--no-sandbox", "--disable-gpu", "--no-first-run",
             "--disable-background-networking", "--disable-component-update", "--disable-sync",
             profile, size, "--dump-dom", "file://" + (folder / "page.html").native()});
    const auto begin = result.standardOutput.find(kBegin);
    const auto end = result.standardOutput.find(kEnd);
    if (begin == std::string::npos || end == std::string::npos)
        throw std::runtime_error("no result from the browser: " + result.standardError);
    const auto at = begin + kBegin.size();
    return QByteArray::fromPercentEncoding(
               QByteArray::fromStdString(result.standardOutput.substr(at, end - at)))
        .toStdString();
}

} // namespace slatewise::test
