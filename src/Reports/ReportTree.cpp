#include "Reports/ReportTree.h"

#include "Platform/Text.h"

#include <algorithm>
#include <memory>
#include <unordered_map>

namespace slatewise::ReportTree {

namespace {

/// A node that can still be added to. Names are views into the manifest.
struct Mutable {
    explicit Mutable(std::string_view itsName) : name(itsName) {}

    Mutable& kid(std::string_view kidName) {
        const auto [entry, isNew] = byName.try_emplace(kidName);
        if (isNew)
            entry->second = kids.emplace_back(std::make_unique<Mutable>(kidName)).get();
        return *entry->second;
    }

    std::string_view name;
    const ManifestFile* file = nullptr;
    /// In the order in which they were first met, so that names that compare equal keep it.
    std::vector<std::unique_ptr<Mutable>> kids;
    std::unordered_map<std::string_view, Mutable*> byName;
};

struct Sibling {
    bool isFile;
    std::string sortKey;
    const Mutable* node;
};

std::vector<Sibling> sortedKids(const Mutable& parent) {
    std::vector<Sibling> siblings;
    siblings.reserve(parent.kids.size());
    for (const auto& kid : parent.kids)
        siblings.push_back(
            {kid->file != nullptr, Text::localizedStandardSortKey(kid->name), kid.get()});
    std::stable_sort(siblings.begin(), siblings.end(), [](const auto& left, const auto& right) {
        if (left.isFile != right.isFile)
            return right.isFile;
        return left.sortKey < right.sortKey;
    });
    return siblings;
}

ReportNode frozen(const Mutable& node, const std::string& parentPath) {
    ReportNode result;
    result.name = node.name;
    result.path = parentPath.empty() ? result.name : parentPath + "/" + result.name;
    result.file = node.file;
    result.totalBytes = node.file ? node.file->sizeBytes : 0;
    result.fileCount = node.file ? 1 : 0;
    result.children.reserve(node.kids.size());
    for (const auto& sibling : sortedKids(node)) {
        const auto& child = result.children.emplace_back(frozen(*sibling.node, result.path));
        result.totalBytes += child.totalBytes;
        result.fileCount += child.fileCount;
    }
    return result;
}

void append(std::span<const ReportNode> nodes, int depth, std::vector<Line>& lines) {
    for (const auto& node : nodes) {
        lines.push_back({&node, depth});
        append(node.children, depth + 1, lines);
    }
}

} // namespace

std::vector<ReportNode> build(std::span<const ManifestFile> files) {
    Mutable root("");
    for (const auto& file : files) {
        Mutable* node = &root;
        for (const auto part : Text::pieces(file.relativePath, '/'))
            node = &node->kid(part);
        if (node != &root)
            node->file = &file;
    }
    return frozen(root, "").children;
}

std::vector<Line> lines(std::span<const ReportNode> nodes, int depth) {
    std::vector<Line> lines;
    append(nodes, depth, lines);
    return lines;
}

} // namespace slatewise::ReportTree
