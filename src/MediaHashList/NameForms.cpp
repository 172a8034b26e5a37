#include "MediaHashList/NameForms.h"

#include "Platform/Text.h"

#include <algorithm>
#include <unordered_map>

namespace slatewise::MediaHashList {

namespace {

struct Same {
    std::vector<std::string_view> lost;
    std::vector<std::string_view> there;
};

} // namespace

bool mayHaveForms(std::string_view name) {
    return std::any_of(name.begin(), name.end(),
                       [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; });
}

std::map<std::string, std::string> inOtherForms(std::span<const std::string> lost,
                                                std::span<const std::string_view> there) {
    std::unordered_map<std::string, Same> names;
    for (const auto& name : lost) {
        if (mayHaveForms(name))
            names[Text::composed(name)].lost.push_back(name);
    }
    if (names.empty())
        return {};
    for (const auto name : there) {
        if (!mayHaveForms(name))
            continue;
        if (const auto same = names.find(Text::composed(name)); same != names.end())
            same->second.there.push_back(name);
    }
    std::map<std::string, std::string> found;
    for (const auto& [composed, same] : names) {
        if (same.lost.size() == 1 && same.there.size() == 1)
            found.emplace(same.lost.front(), same.there.front());
    }
    return found;
}

} // namespace slatewise::MediaHashList
