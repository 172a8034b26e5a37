#pragma once

#include "Reports/SessionManifest.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace slatewise {

/// A folder or a file of a session, with everything below it. It looks into the manifest it was
/// built from, which must outlive it. Name and path are bytes.
struct ReportNode {
    std::string name;
    /// From the card's root, without a leading "/".
    std::string path;
    /// Null on a folder.
    const ManifestFile* file = nullptr;
    /// Folders first, each kind in the order in which a person expects names. A file has children
    /// only when its path is also the beginning of another.
    std::vector<ReportNode> children;
    /// Of the file itself and of all below.
    std::int64_t totalBytes = 0;
    int fileCount = 0;

    bool isDirectory() const { return file == nullptr; }
};

/// Folds a session's flat list into the tree that all reports show. Without state.
namespace ReportTree {

/// The items at the card's root. Of two rows with one path the later one counts; a row without a
/// path is left out.
std::vector<ReportNode> build(std::span<const ManifestFile> files);

/// A node as one line of a table, that many levels deep.
struct Line {
    const ReportNode* node;
    int depth;
};

/// Each folder's line, then its content; the first ones have that depth. Points into `nodes`.
std::vector<Line> lines(std::span<const ReportNode> nodes, int depth = 0);

} // namespace ReportTree

} // namespace slatewise
