#include "Reports/PdfProblems.h"

#include "Language/L10n.h"

#include <algorithm>
#include <limits>

namespace slatewise::PdfReport {

namespace {

constexpr PdfColor kNote = {0.54, 0.33, 0};

constexpr std::size_t kLinesInHead = 2;
constexpr double kHeadLineHeight = 8.2;
constexpr auto kUnlimited = std::numeric_limits<std::size_t>::max();

/// What the lines of a page may take, below its header and above its foot.
constexpr double kPageRoom = 510;
constexpr double kLineHeight = 10.5;
constexpr double kSentenceGap = 4;
constexpr double kHeadingGap = 10;

constexpr TextStyle inHead(const PdfColor& color) {
    return system(6.8, FontWeight::Semibold, color);
}

ProblemPage sentencesOf(const SessionManifest& manifest) {
    ProblemPage sentences;
    for (const auto& problem : manifest.problems)
        sentences.push_back({problem, inHead(colorOf(OutcomeStatus::Failed)), kHeadLineHeight});
    for (const auto& note : manifest.notes)
        sentences.push_back({note, inHead(kNote), kHeadLineHeight});
    return sentences;
}

/// The head's lines, before it is known whether all have room.
ProblemPage spread(PdfCanvas& canvas, ProblemPage sentences, double width) {
    if (sentences.size() != 1)
        return sentences;
    const auto only = std::move(sentences.front());
    ProblemPage lines;
    for (auto& line : canvas.wrapped(only.text, only.style, width, kLinesInHead))
        lines.push_back({std::move(line), only.style, only.spaceBefore});
    return lines;
}

bool fitsHead(PdfCanvas& canvas, const ProblemPage& lines, double width) {
    return lines.size() <= kLinesInHead &&
           std::all_of(lines.begin(), lines.end(), [&](const ProblemLine& line) {
               return canvas.width(line.text, line.style) <= width;
           });
}

/// A heading and its sentences, each wrapped to the column.
void append(PdfCanvas& canvas, L10n::Text heading, const std::vector<std::string>& sentences,
            const PdfColor& color, double width, ProblemPage& lines) {
    if (sentences.empty())
        return;
    lines.push_back(
        {std::string(heading), system(11, FontWeight::Bold, color), kLineHeight + kHeadingGap});
    const auto style = system(8, FontWeight::Medium, color);
    for (const auto& sentence : sentences) {
        double space = kLineHeight + kSentenceGap;
        for (auto& line : canvas.wrapped(sentence, style, width, kUnlimited)) {
            lines.push_back({std::move(line), style, space});
            space = kLineHeight;
        }
    }
}

} // namespace

ProblemPage problemsInHead(PdfCanvas& canvas, const SessionManifest& manifest, const L10n& l10n,
                           double width, std::size_t fullFromPage) {
    auto lines = sentencesOf(manifest);
    if (fullFromPage == 0)
        return spread(canvas, std::move(lines), width);
    const auto hidden = static_cast<int>(lines.size()) - 1;
    lines.resize(1, {});
    auto rest = lines.front();
    rest.text = l10n.reportMoreProblems(hidden, static_cast<int>(fullFromPage));
    lines.push_back(std::move(rest));
    return lines;
}

std::vector<ProblemPage> problemPages(PdfCanvas& canvas, const SessionManifest& manifest,
                                      const L10n& l10n, double width) {
    if (fitsHead(canvas, spread(canvas, sentencesOf(manifest), width), width))
        return {};
    ProblemPage lines;
    append(canvas, l10n.reportProblems(), manifest.problems, colorOf(OutcomeStatus::Failed), width,
           lines);
    append(canvas, l10n.reportNotes(), manifest.notes, kNote, width, lines);
    std::vector<ProblemPage> pages;
    double room = 0;
    for (auto& line : lines) {
        room -= line.spaceBefore;
        if (pages.empty() || room < 0) {
            pages.emplace_back();
            room = kPageRoom - line.spaceBefore;
        }
        pages.back().push_back(std::move(line));
    }
    return pages;
}

double drawProblems(PdfCanvas& canvas, const ProblemPage& lines, const TextColumn& column,
                    double top) {
    for (const auto& line : lines) {
        top -= line.spaceBefore;
        drawLine(canvas, line.text, column, top, line.style);
    }
    return top - 2 * kLineHeight;
}

void drawProblemPages(PdfCanvas& canvas, std::span<const ProblemPage> pages,
                      const TextColumn& column, double top, PageNumber& page,
                      const std::function<void()>& drawHead,
                      const std::function<void(double bottom)>& drawFoot) {
    for (const auto& lines : pages) {
        canvas.beginPage();
        drawHead();
        drawFoot(drawProblems(canvas, lines, column, top));
        canvas.endPage();
        ++page.number;
    }
}

} // namespace slatewise::PdfReport
