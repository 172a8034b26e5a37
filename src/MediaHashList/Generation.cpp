#include "MediaHashList/Generation.h"

#include "Platform/Text.h"

#include <algorithm>

namespace slatewise::MediaHashList {

namespace {

/// Two characters of the first plane's end are no characters at all.
constexpr std::string_view kNoCharacters[] = {"\xef\xbf\xbe", "\xef\xbf\xbf"};

/// Sorts a folder behind all that lies in it, and names as bytes.
std::string postOrderKey(std::string_view path, std::string_view end) {
    std::string key(path);
    std::replace(key.begin(), key.end(), '/', '\0');
    return key.append(end);
}

template <typename Item>
void sortByKey(std::vector<Item>& items, std::string_view end) {
    std::sort(items.begin(), items.end(), [&](const Item& left, const Item& right) {
        return postOrderKey(left.path, end) < postOrderKey(right.path, end);
    });
}

} // namespace

bool canHold(std::string_view name) {
    if (Text::displayable(name) != name)
        return false;
    const auto isHeld = [](char byte) {
        const auto code = static_cast<unsigned char>(byte);
        return code >= ' ' || byte == '\t' || byte == '\n';
    };
    return std::all_of(name.begin(), name.end(), isHeld) &&
           std::none_of(std::begin(kNoCharacters), std::end(kNoCharacters), [&](auto sequence) {
               return name.find(sequence) != std::string_view::npos;
           });
}

std::string holdable(std::string_view given) {
    auto text = Text::displayable(given);
    for (const auto sequence : kNoCharacters)
        text = Text::replaced(text, sequence, "_");
    std::replace_if(
        text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) < ' '; },
        '_');
    return text;
}

bool hasFailed(const HashedFile& file) {
    return std::any_of(file.values.begin(), file.values.end(),
                       [](const auto& value) { return value.action == HashAction::Failed; });
}

bool leadsDown(std::string_view path) {
    if (path.empty() || path.front() == '/' || path.find('\0') != std::string_view::npos)
        return false;
    const auto parts = Text::pieces(path, '/');
    return !parts.empty() && std::none_of(parts.begin(), parts.end(), [](std::string_view part) {
        return part == "." || part == "..";
    });
}

void sortInPostOrder(Generation& generation) {
    using namespace std::string_view_literals;
    sortByKey(generation.files, ""sv);
    sortByKey(generation.folders, "\0\xff"sv);
}

} // namespace slatewise::MediaHashList
