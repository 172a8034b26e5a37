#pragma once

#include "Language/L10n.h"
#include "Platform/Files/RootFolder.h"
#include "Reports/HtmlText.h"
#include "Reports/ReportTree.h"

#include <span>
#include <vector>

namespace slatewise {

/// A session as one page that needs nothing else: header, foldable tree, footer. The two HTML
/// reports derive from it and say only what their columns hold. Without state of its own, so one
/// value may serve many sessions and threads.
class HtmlReport {
public:
    explicit HtmlReport(AppLanguage language) : l10n_(language) {}
    virtual ~HtmlReport() = default;

    /// The whole page.
    std::string document(const SessionManifest& manifest) const;

    /// The same into a file, of which no more than a piece is in memory. Fails with `PosixError`.
    void write(const SessionManifest& manifest, std::span<const ReportNode> tree,
               const FileBeneath& file) const;

    /// A folder with everything below it, or a file, as an item of a list.
    void renderNode(HtmlText& page, const ReportNode& node, int depth) const;

protected:
    /// The page's place in the set: its file's name without the extension.
    virtual std::string_view name() const = 0;
    /// Style rules behind those that both pages share.
    virtual std::string_view style() const = 0;
    virtual std::vector<L10n::Text> columnTitles() const = 0;
    /// The row of column titles, and whatever stands between them and the tree.
    virtual void renderHead(HtmlText& page, const SessionManifest& manifest) const = 0;
    /// What a folder's row holds behind its name and size.
    virtual void renderFolderCells(HtmlText& page, const ReportNode& folder) const = 0;
    virtual void renderFile(HtmlText& page, const ReportNode& node, int depth) const = 0;
    /// What the foot of the page names beside the program.
    virtual std::string_view footerNote() const { return ""; }

    /// A size in two forms, one below the other: for people, and exact.
    void sizeCell(HtmlText& page, std::int64_t bytes) const;
    /// A word of the manifest, which a narrow column breaks at its underscores only.
    static void statusWords(HtmlText& page, std::string_view word);
    /// What is as it should be looks calm, all else cannot be overlooked.
    static std::string_view styleOf(VerifyStatus status);
    const L10n& l10n() const { return l10n_; }

private:
    void render(HtmlText& page, const SessionManifest& manifest,
                std::span<const ReportNode> tree) const;
    void renderHeader(HtmlText& page, const SessionManifest& manifest) const;
    void renderVerdict(HtmlText& page, const SessionManifest& manifest) const;
    static void renderSentences(HtmlText& page, std::string_view kind, std::string_view title,
                                const std::vector<std::string>& sentences);
    void renderLabels(HtmlText& page) const;
    void renderItems(HtmlText& page, std::span<const ReportNode> nodes, int depth) const;
    void renderFolder(HtmlText& page, const ReportNode& folder, int depth) const;
    void renderFooter(HtmlText& page) const;

    L10n l10n_;
};

} // namespace slatewise
