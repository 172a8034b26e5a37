#include "Offload/FolderTemplate.h"

#include "Offload/OffloadSettings.h"
#include "Offload/ReportNames.h"
#include "Platform/Error.h"
#include "Platform/Files/RootFolder.h"
#include "Platform/NameForms.h"
#include "Platform/Text.h"
#include "Platform/Uuid.h"

#include <algorithm>
#include <set>
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

/// What a session's folder cannot be called.
class TakenNames {
public:
    /// The disk must outlive it.
    TakenNames(const RootFolder& disk, std::filesystem::path parent)
        : disk_(disk), parent_(std::move(parent)) {}

    bool has(const std::string& name) {
        // A folder of hash lists is called so, which would make the footage in it part of these.
        constexpr std::string_view kOfLists = "ascmhl";
        return disk_.exists(parent_ / name) || Text::asciiLowercased(name) == kOfLists ||
               looksLikeAnother(name);
    }

private:
    static std::string lookOf(std::string_view name) {
        return Text::composed(Text::displayable(name));
    }

    /// The reports have a name as it looks: of two that look the same nobody could tell which of
    /// both folders they are of. Most names have one look, and cost no listing of what may be
    /// thousands of sessions.
    bool looksLikeAnother(const std::string& name) {
        if (!NameForms::mayHaveForms(name))
            return false;
        if (!looks_) {
            looks_.emplace();
            for (const auto& other : siblings()) {
                if (NameForms::mayHaveForms(other))
                    looks_->insert(lookOf(other));
            }
        }
        return looks_->contains(lookOf(name));
    }

    /// None where the folder is yet to be made, or whoever makes it learns what is wrong there.
    std::vector<std::string> siblings() const {
        try {
            return disk_.below(parent_).names();
        } catch (const PosixError&) {
            return {};
        }
    }

    const RootFolder& disk_;
    const std::filesystem::path parent_;
    std::optional<std::set<std::string>> looks_;
};

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

std::filesystem::path uniqueExisting(const std::filesystem::path& path, const RootFolder& disk) {
    constexpr int kLastNumber = 99;
    constexpr std::size_t kRandomDigits = 8;
    TakenNames taken(disk, path.parent_path());
    if (!taken.has(path.filename()))
        return path;
    for (int number = 2; number <= kLastNumber; ++number) {
        auto candidate = withEnding(path, std::to_string(number));
        if (!taken.has(candidate.filename()))
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
