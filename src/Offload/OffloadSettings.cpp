#include "Offload/OffloadSettings.h"

#include "Offload/FolderTemplate.h"
#include "Offload/TreeWalker.h"
#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Json.h"

#include <algorithm>
#include <array>

namespace slatewise {

namespace {

constexpr std::string_view kStoredUnder = "offloadSettings";
/// Stands in settings whose template is what the user wants, be it one of those below.
constexpr auto* kTemplateIsChosen = "folderTemplateIsChosen";

/// Templates that were the default once. Who never chose another gets today's default.
constexpr std::array<std::string_view, 3> kEarlierDefaults = {
    "{Dest}/{YYYY-MM-DD}/{CardName}_{HHmmss}",
    "{Dest}/{YYYY-MM-DD}/{Cam}_{CardName}_{HHmmss}",
    "{Dest}/{YYYY-MM-DD}/{Cam}/{CardName}_{HHmmss}",
};

template <typename Visit>
void forEachField(Visit&& visit) {
    using Settings = OffloadSettings;
    visit("folderTemplate", &Settings::folderTemplate);
    visit("ejectAfterSuccess", &Settings::ejectAfterSuccess);
    visit("extraExcludes", &Settings::extraExcludes);
    visit("copyDespiteSkipNames", &Settings::copyDespiteSkipNames);
    visit("verifyOnly", &Settings::verifyOnly);
    visit("outputFolderPath", &Settings::outputFolderPath);
    visit("projectName", &Settings::projectName);
    visit("writesHashList", &Settings::writesHashList);
    visit("listAuthor", &Settings::listAuthor);
    visit("listRole", &Settings::listRole);
    visit("listLocation", &Settings::listLocation);
}

bool contains(const std::vector<std::string>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace

OffloadSettings::OffloadSettings() : folderTemplate(FolderTemplate::defaultTemplate) {}

OffloadSettings OffloadSettings::load(const UserDefaults& defaults) {
    const auto stored = defaults.value(kStoredUnder);
    if (!stored)
        return {};
    try {
        const auto object = Json::Value::parse(*stored);
        if (!object.is_object())
            return {};
        OffloadSettings settings;
        forEachField([&](const char* name, auto member) {
            Json::getIfPresent(object, name, settings.*member);
        });
        bool isChosen = false;
        Json::getIfPresent(object, kTemplateIsChosen, isChosen);
        if (!isChosen && std::find(kEarlierDefaults.begin(), kEarlierDefaults.end(),
                                   settings.folderTemplate) != kEarlierDefaults.end())
            settings.folderTemplate = FolderTemplate::defaultTemplate;
        return settings;
    } catch (const Json::Value::exception&) {
        return {};
    }
}

void OffloadSettings::save(UserDefaults& defaults) const {
    Json::Value object = Json::Value::object();
    Json::put(object, kTemplateIsChosen, true);
    forEachField([&](const char* name, auto member) { Json::put(object, name, this->*member); });
    defaults.setValue(kStoredUnder, Json::compactText(object));
}

SkipNames OffloadSettings::skipNames() const {
    SkipNames names = TreeWalker::defaultSkipNames();
    for (const auto& name : copyDespiteSkipNames)
        names.erase(name);
    names.insert(extraExcludes.begin(), extraExcludes.end());
    return names;
}

bool OffloadSettings::isDefaultSkipped(std::string_view name) const {
    return !contains(copyDespiteSkipNames, name);
}

void OffloadSettings::setDefaultSkipped(std::string_view name, bool skipped) {
    if (!TreeWalker::defaultSkipNames().contains(name))
        return;
    if (skipped)
        std::erase(copyDespiteSkipNames, name);
    else if (isDefaultSkipped(name))
        copyDespiteSkipNames.emplace_back(name);
}

void OffloadSettings::addExclude(std::string_view typed) {
    const auto name = TreeWalker::normalizeSkipName(typed);
    if (!name)
        return;
    std::erase(copyDespiteSkipNames, *name);
    if (TreeWalker::defaultSkipNames().contains(*name) || contains(extraExcludes, *name))
        return;
    extraExcludes.push_back(*name);
    std::stable_sort(extraExcludes.begin(), extraExcludes.end(),
                     [](const auto& left, const auto& right) {
                         return Text::localizedStandardCompare(left, right) < 0;
                     });
}

void OffloadSettings::removeExclude(std::string_view name) {
    std::erase(extraExcludes, name);
}

} // namespace slatewise
