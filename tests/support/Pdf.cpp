#include "support/Pdf.h"

#include "support/Process.h"

#include <fmt/format.h>

#include <regex>
#include <sstream>
#include <stdexcept>

namespace slatewise::test {

namespace {

std::string output(const std::vector<std::string>& words) {
    const auto result = run(words);
    if (result.exitCode != 0 || !result.standardError.empty())
        throw std::runtime_error(words.front() + " failed: " + result.standardError);
    return result.standardOutput;
}

std::string unescaped(std::string text) {
    const std::vector<std::pair<std::string, std::string>> signs = {
        {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&apos;", "'"}, {"&amp;", "&"}};
    for (const auto& [from, to] : signs) {
        for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
            text.replace(at, from.size(), to);
    }
    return text;
}

} // namespace

std::string pdfText(const std::filesystem::path& file) {
    return output({"pdftotext", "-layout", file, "-"});
}

std::vector<PdfWord> pdfWords(const std::filesystem::path& file) {
    const std::regex pattern(
        R"re(<word xMin="(.*)" yMin="(.*)" xMax="(.*)" yMax="(.*)">(.*)</word>)re");
    std::vector<PdfWord> words;
    int page = 0;
    std::istringstream lines(output({"pdftotext", "-bbox", file, "-"}));
    for (std::string line; std::getline(lines, line);) {
        if (line.find("<page ") != std::string::npos)
            ++page;
        std::smatch parts;
        if (std::regex_search(line, parts, pattern))
            words.push_back({page, std::stod(parts[1]), std::stod(parts[2]), std::stod(parts[3]),
                             std::stod(parts[4]), unescaped(parts[5])});
    }
    return words;
}

PdfPicture pdfPicture(const std::filesystem::path& file, int page) {
    constexpr int kPointsPerInch = 72;
    const auto number = std::to_string(page);
    const auto image = output({"pdftoppm", "-r", std::to_string(kPointsPerInch * kPixelsPerPoint),
                               "-f", number, "-l", number, file});
    PdfPicture picture;
    std::istringstream header(image);
    std::string magic;
    int brightest = 0;
    header >> magic >> picture.width >> picture.height >> brightest;
    picture.pixels = image.substr(static_cast<std::size_t>(header.tellg()) + 1);
    return picture;
}

std::vector<std::string> pdfMediaBoxes(const std::filesystem::path& file) {
    const std::regex pattern(R"(Page +\d+ MediaBox: +(.*))");
    std::vector<std::string> boxes;
    std::istringstream lines(output({"pdfinfo", "-box", "-f", "1", "-l", "-1", file}));
    for (std::string line; std::getline(lines, line);) {
        std::smatch parts;
        if (std::regex_match(line, parts, pattern))
            boxes.push_back(std::regex_replace(parts[1].str(), std::regex(" +"), " "));
    }
    return boxes;
}

PdfFontCounts pdfFonts(const std::filesystem::path& file) {
    PdfFontCounts counts;
    std::istringstream lines(output({"pdffonts", file}));
    for (std::string line; std::getline(lines, line);) {
        if (line.find("Identity-H") == std::string::npos)
            continue;
        ++counts.all;
        counts.embedded += line.find("yes yes yes") != std::string::npos ? 1 : 0;
    }
    return counts;
}

} // namespace slatewise::test
