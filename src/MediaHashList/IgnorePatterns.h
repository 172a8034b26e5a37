#pragma once

#include "Offload/OffloadSettings.h"

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// What a list leaves out on purpose, in patterns as in .gitignore.
namespace slatewise::MediaHashList {

/// Patterns by the folder of their history, "" for the root, below which alone they count.
using IgnoredBelow = std::map<std::string, std::vector<std::string>>;

/// Of the names that a walk leaves out, and of histories. Names that XML cannot hold have none.
std::vector<std::string> ignorePatterns(const SkipNames& skipNames);

/// A list's patterns, to be held against many paths: they are taken apart once, and what they make
/// of a folder is known for all that is asked of it in a row. That of histories' own folders, which
/// every list has, is of nothing here: what lies in these is for others to judge. One thread at a
/// time.
class IgnoreList {
public:
    explicit IgnoreList(std::span<const std::string> patterns);

    /// What the last pattern says that is of this path below the root, or of a folder on its way:
    /// that it is left out, or, of one that begins with "!", that it is not. Nothing when none is.
    std::optional<bool> verdict(std::string_view path, bool isFolder = false);

    bool ignores(std::string_view path, bool isFolder = false) {
        return verdict(path, isFolder).value_or(false);
    }

private:
    /// What one name of a path is to be.
    struct Part {
        enum class Kind { AnyDepth, Text, Stars, Glob };
        Kind kind = Kind::Text;
        std::string text;
        /// What stands between the stars.
        std::vector<std::string> pieces;

        bool isOf(std::string_view name) const;
    };
    struct Pattern {
        std::vector<Part> parts;
        bool takesBack = false;
        bool isOfFolders = false;
    };
    /// How far a pattern of several parts has come.
    struct Place {
        std::uint32_t pattern = 0;
        std::uint32_t part = 0;

        friend auto operator<=>(const Place&, const Place&) = default;
    };
    struct Reached {
        /// The last pattern that is of the folder, counted from 1; 0 when none is.
        std::size_t last = 0;
        std::vector<Place> places;
    };

    static Part partOf(std::string_view text);
    void add(std::string_view pattern);
    void reach(std::vector<Place>& places, Place place) const;
    Reached below(const Reached& folder, std::string_view name, bool isFolder) const;
    const Reached& in(std::string_view folder);

    std::vector<Pattern> patterns_;
    /// Those of one name, without and with wildcards in it.
    std::unordered_map<std::string, std::vector<std::size_t>> byName_;
    std::vector<std::size_t> globs_;
    /// Where those begin anew in every folder that begin at any depth.
    std::vector<Place> everywhere_;
    /// The folder that was asked of last, where the names on the way to it end, and what was
    /// reached at each, the root's first.
    std::string folder_;
    std::vector<std::size_t> ends_;
    std::vector<Reached> reached_;
};

/// The lists of a tree's histories. The innermost that says anything of a path has the last word.
class IgnoreLists {
public:
    explicit IgnoreLists(const IgnoredBelow& below);

    bool ignores(std::string_view path, bool isFolder = false);

private:
    std::map<std::string, IgnoreList, std::less<>> lists_;
};

} // namespace slatewise::MediaHashList
