#include "Platform/NameForms.h"

#include "Platform/Text.h"

#include <algorithm>
#include <unordered_map>

namespace slatewise::NameForms {

namespace {

struct Same {
    std::vector<std::string> lost;
    std::vector<std::string_view> there;
};

} // namespace

bool mayHaveForms(std::string_view name) {
    // Beside what is no ASCII: the sign for kelvin, a Greek question mark and a Greek accent are
    // these in every form but their own.
    constexpr std::string_view kWithAnother = "K;`";
    return std::any_of(name.begin(), name.end(), [&](char byte) {
        return static_cast<unsigned char>(byte) >= 0x80 ||
               kWithAnother.find(byte) != std::string_view::npos;
    });
}

std::vector<SameName> inOtherForms(std::span<const std::string> lost,
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
    std::vector<SameName> found;
    for (auto& [composed, same] : names) {
        if (same.there.size() == 1)
            found.push_back({std::string(same.there.front()), std::move(same.lost)});
    }
    return found;
}

std::filesystem::path asItLies(const std::filesystem::path& listed, const Look& look) {
    return Finder(look).asItLies(listed);
}

std::filesystem::path Finder::asItLies(const std::filesystem::path& listed) {
    if (!mayHaveForms(listed.native()))
        return listed;
    std::filesystem::path found;
    for (const auto& part : listed) {
        const std::vector<std::string>* meant = nullptr;
        if (mayHaveForms(part.native()) && !look_.isThere(found / part)) {
            const auto& names = namesIn(found);
            const auto same = names.find(Text::composed(part.native()));
            if (same != names.end())
                meant = &same->second;
        }
        found /= meant && meant->size() == 1 ? std::filesystem::path(meant->front()) : part;
    }
    return found;
}

const Finder::Names& Finder::namesIn(const std::filesystem::path& folder) {
    if (const auto known = names_.find(folder); known != names_.end())
        return known->second;
    Names names;
    for (auto& name : look_.namesIn(folder)) {
        if (mayHaveForms(name))
            names[Text::composed(Text::displayable(name))].push_back(std::move(name));
    }
    return names_.emplace(folder, std::move(names)).first->second;
}

} // namespace slatewise::NameForms
