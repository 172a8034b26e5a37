#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Systems write one name in several Unicode forms: a letter with its accent as one character or as
/// two. A disk may give back another form than a list has, whose bytes differ.
namespace slatewise::MediaHashList {

/// Whether a name has other forms at all, as far as that shows at a glance.
bool mayHaveForms(std::string_view name);

/// Of names that are lost, the one among those that are there that is the same in another form.
/// Where several are the same, on either side, nobody knows which is which, and none is given.
std::map<std::string, std::string> inOtherForms(std::span<const std::string> lost,
                                                std::span<const std::string_view> there);

} // namespace slatewise::MediaHashList
