#pragma once

#include <span>
#include <string>
#include <string_view>
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

} // namespace slatewise::NameForms
