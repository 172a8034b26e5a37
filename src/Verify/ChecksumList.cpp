#include "Verify/ChecksumList.h"

#include "MediaHashList/ListError.h"
#include "Platform/HashValue.h"
#include "Platform/Text.h"

#include <algorithm>

namespace slatewise::Verify::ChecksumList {

namespace {

using MediaHashList::ListError;

constexpr std::size_t kDigestLength = 64;

/// The name in a line that begins with a backslash, as checking tools write odd ones.
std::string unescaped(std::string_view name) {
    std::string text;
    for (std::size_t at = 0; at < name.size(); ++at) {
        if (name[at] != '\\' || at + 1 == name.size()) {
            text += name[at];
            continue;
        }
        const char next = name[++at];
        text += next == 'n' ? '\n' : next == 'r' ? '\r' : next;
    }
    return text;
}

} // namespace

std::vector<std::string_view> linesOf(std::string_view text) {
    auto lines = Text::pieces(text, '\n');
    for (auto& line : lines)
        line.remove_suffix(line.ends_with('\r') ? 1 : 0);
    std::erase_if(lines, [](std::string_view line) { return line.empty(); });
    return lines;
}

Line parsed(std::string_view line, const std::filesystem::path& list) {
    const bool isEscaped = line.starts_with('\\');
    line.remove_prefix(isEscaped ? 1 : 0);
    auto digest = Text::asciiLowercased(line.substr(0, kDigestLength));
    std::string_view name = line.substr(std::min(line.size(), kDigestLength + 2));
    // As who lists a folder with other tools often has them.
    constexpr std::string_view kHere = "./";
    while (name.starts_with(kHere))
        name.remove_prefix(kHere.size());
    if (name.empty() || !isValue(HashFormat::SHA256, digest) || line[kDigestLength] != ' ')
        throw ListError(ListError::Reason::NotAList, std::string(line), list);
    return {std::move(digest), isEscaped ? unescaped(name) : std::string(name)};
}

} // namespace slatewise::Verify::ChecksumList
