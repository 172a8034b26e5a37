#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

/// Systems write one name in several Unicode forms: a letter with its accent as one character or as
/// two. A disk may give back another form than it was given, or than a list has, whose bytes
/// differ.
namespace slatewise::NameForms {

/// Whether a name has other forms at all, as far as that shows at a glance.
bool mayHaveForms(std::string_view name);

/// A name that is there, and those that are the same in another form and are lost.
struct SameName {
    std::string there;
    std::vector<std::string> lost;
};

/// The names that are there for those that are lost. Where several that are there are the same,
/// nobody knows which is meant, and none is given.
std::vector<SameName> inOtherForms(std::span<const std::string> lost,
                                   std::span<const std::string_view> there);

/// How one looks at what lies below a place, by paths or under a handle. Both are given paths
/// relative to it; what they fail with is passed on.
struct Look {
    std::function<bool(const std::filesystem::path& item)> isThere;
    std::function<std::vector<std::string>(const std::filesystem::path& folder)> namesIn;
};

/// Where something lies whose path stands in a list. Lists show names that are no UTF-8 and cannot
/// hold them, and a disk may have a name in another form than it had. Where several may be meant,
/// or none, it stays as it is.
std::filesystem::path asItLies(const std::filesystem::path& listed, const Look& look);

/// The same for many paths below a place that stays as it is meanwhile: no folder is listed twice.
/// One thread at a time.
class Finder {
public:
    explicit Finder(Look look) : look_(std::move(look)) {}

    std::filesystem::path asItLies(const std::filesystem::path& listed);

private:
    /// Names that are there, by what they are in every form.
    using Names = std::unordered_map<std::string, std::vector<std::string>>;

    const Names& namesIn(const std::filesystem::path& folder);

    Look look_;
    std::map<std::filesystem::path, Names> names_;
};

} // namespace slatewise::NameForms
