#include "Offload/FolderTemplate.h"

#include "Offload/OffloadSettings.h"
#include "Offload/ReportNames.h"
#include "Platform/Text.h"
#include "Platform/Uuid.h"

#include <algorithm>
#include <utility>

namespace slatewise::FolderTemplate {

namespace {

std::string withoutSlashes(std::string_view name) {
    return Text::replaced(name, "/", "-");
}

/// Last component, also of a path that ends in a slash; "/" for the root.
std::string lastComponent(const std::filesystem::path& path) {
    const auto normal = path.lexically_normal();
    const auto name = normal.has_filename() ? normal.filename() : normal.parent_path().filename();
    return name.empty() ? normal.native() : name.native();
}

std::string orElse(const std::string& text, std::string_view fallback) {
    return text.empty() ? std::string(fallback) : text;
}

/// "." and ".." are names to a person and ways to a disk.
std::string orElseIfNoName(const std::string& text, std::string_view fallback) {
    return text == "." || text == ".." ? std::string(fallback) : orElse(text, fallback);
}

std::string cardNameInPath(std::string_view name) {
    auto text = withoutSlashes(name);
    return text.empty() ? text : orElseIfNoName(text, "CARD");
}

std::filesystem::path withEnding(const std::filesystem::path& path, const std::string& ending) {
    return path.parent_path() / (path.filename().native() + "_" + ending);
}

} // namespace

std::filesystem::path expand(std::string_view pathTemplate, const Values& values) {
    const std::array<std::pair<std::string_view, std::string>, 9> replacements = {{
        {"{DestName}", withoutSlashes(lastComponent(values.destination))},
        {"{Dest}", values.destination.native()},
        {"{YYYY-MM-DD}", Clock::localText(values.now, "yyyy-MM-dd")},
        {"{YYYYMMDD}", Clock::localText(values.now, "yyyyMMdd")},
        {"{Project}", orElseIfNoName(Text::pathSafeLabel(values.project), "PROJECT")},
        {"{Ekip}", orElseIfNoName(Text::pathSafeLabel(values.ekip), "EKIP")},
        {"{Cam}", orElseIfNoName(Text::pathSafeLabel(values.camera), "CAM")},
        {"{CardName}", cardNameInPath(values.cardName)},
        {"{HHmmss}", Clock::localText(values.now, "HHmmss")},
    }};
    // What a value holds is a name and no template: a disk may be called "{Cam}".
    const auto text = normalize(pathTemplate);
    std::string path;
    for (std::string_view rest = text; !rest.empty();) {
        const auto* const match =
            std::find_if(replacements.begin(), replacements.end(), [&](const auto& replacement) {
                return rest.starts_with(replacement.first);
            });
        const bool isToken = match != replacements.end();
        path += isToken ? std::string_view(match->second) : rest.substr(0, 1);
        rest.remove_prefix(isToken ? match->first.size() : 1);
    }
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    // Appending an absolute path gives that path.
    return values.destination / path;
}

std::optional<std::filesystem::path> belowDestination(const std::filesystem::path& session,
                                                      const std::filesystem::path& destination) {
    auto below = session.lexically_normal().lexically_relative(destination.lexically_normal());
    if (!below.has_filename())
        below = below.parent_path();
    // Some disks take "Reports" for the same.
    const bool isReports = Text::asciiLowercased(below.native()) == ReportNames::folder;
    if (below.empty() || below == "." || *below.begin() == ".." || isReports)
        return std::nullopt;
    return below;
}

bool leadsOut(std::string_view pathTemplate) {
    // Which nobody can have written into the template.
    const auto destination = std::filesystem::path("/") / Uuid::random().text();
    const Values names{.destination = destination,
                       .cardName = "card",
                       .camera = "camera",
                       .ekip = "crew",
                       .project = "project"};
    return !belowDestination(expand(pathTemplate, names), destination);
}

std::filesystem::path
uniqueExisting(const std::filesystem::path& path,
               const std::function<bool(const std::filesystem::path&)>& exists) {
    constexpr int kLastNumber = 99;
    constexpr std::size_t kRandomDigits = 8;
    if (!exists(path))
        return path;
    for (int number = 2; number <= kLastNumber; ++number) {
        auto candidate = withEnding(path, std::to_string(number));
        if (!exists(candidate))
            return candidate;
    }
    return withEnding(path, Uuid::random().text().substr(0, kRandomDigits));
}

std::string normalize(std::string_view pathTemplate) {
    auto text = Text::trimmed(pathTemplate);
    return text.empty() ? std::string(defaultTemplate) : text;
}

std::filesystem::path sessionRoot(const OffloadSettings& settings, Values values) {
    values.project = settings.projectName;
    return expand(settings.folderTemplate, values);
}

} // namespace slatewise::FolderTemplate
