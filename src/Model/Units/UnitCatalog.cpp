#include "Model/Units/UnitCatalog.h"

#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Json.h"
#include "Platform/Text.h"
#include "Platform/Uuid.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace slatewise {

namespace {

constexpr std::string_view kStoredUnder = "unitCatalog";
constexpr std::string_view kEkip = "Ekip";
/// How crews were numbered once.
constexpr std::string_view kEarlierPrefix = "Set ";

constexpr std::array<std::string_view, 7> kDefaultUnits = {"CamA",  "CamB",   "CamC", "CamD",
                                                           "Drone", "Gimbal", "Ses"};

std::vector<std::string> defaultUnits() {
    return {kDefaultUnits.begin(), kDefaultUnits.end()};
}

ProductionSet newSet(std::string name) {
    auto id = Uuid::random().text();
    std::transform(id.begin(), id.end(), id.begin(), [](char digit) {
        return digit >= 'a' && digit <= 'f' ? static_cast<char>(digit - 'a' + 'A') : digit;
    });
    return {std::move(id), std::move(name)};
}

/// The whole text as a number that one more can follow.
std::optional<int> number(std::string_view text) {
    constexpr int kHighest = 999'999'999;
    int value = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (failure != std::errc() || end != text.data() + text.size() || value > kHighest)
        return std::nullopt;
    return value;
}

UnitCatalog decoded(const std::string& stored) {
    const auto object = Json::Value::parse(stored);
    UnitCatalog catalog;
    for (const auto& entry : object.at("sets")) {
        auto& set = catalog.sets.emplace_back();
        Json::get(entry, "id", set.id);
        Json::get(entry, "name", set.name);
    }
    if (!catalog.sets.empty())
        catalog.selectedSetID = catalog.sets.front().id;
    Json::getIfPresent(object, "selectedSetID", catalog.selectedSetID);
    catalog.units = defaultUnits();
    return catalog;
}

std::optional<UnitCatalog> storedCatalog(const UserDefaults& defaults) {
    const auto stored = defaults.value(kStoredUnder);
    if (!stored)
        return std::nullopt;
    try {
        auto catalog = decoded(*stored);
        if (catalog.sets.empty())
            return std::nullopt;
        return catalog;
    } catch (const Json::Value::exception&) {
        return std::nullopt;
    }
}

bool hasEarlierName(const ProductionSet& set) {
    return set.name.starts_with(kEarlierPrefix);
}

} // namespace

UnitCatalog UnitCatalog::blank() {
    UnitCatalog catalog;
    catalog.sets = {newSet("Ekip1"), newSet("Ekip2")};
    catalog.selectedSetID = catalog.sets.front().id;
    catalog.units = defaultUnits();
    return catalog;
}

UnitCatalog UnitCatalog::load(UserDefaults& defaults) {
    auto stored = storedCatalog(defaults);
    if (!stored)
        return blank();
    if (std::all_of(stored->sets.begin(), stored->sets.end(), hasEarlierName)) {
        auto fresh = blank();
        fresh.save(defaults);
        return fresh;
    }
    auto catalog = *stored;
    for (auto& set : catalog.sets) {
        if (!hasEarlierName(set))
            continue;
        if (const auto earlier = number(set.name.substr(kEarlierPrefix.size())))
            set.name = std::string(kEkip) + std::to_string(*earlier);
    }
    if (catalog.sets[catalog.selectedSetIndex()].id != catalog.selectedSetID)
        catalog.selectedSetID = catalog.sets.front().id;
    if (catalog != *stored)
        catalog.save(defaults);
    return catalog;
}

void UnitCatalog::save(UserDefaults& defaults) const {
    auto list = Json::Value::array();
    for (const auto& set : sets) {
        auto& entry = list.emplace_back(Json::Value::object());
        Json::put(entry, "id", set.id);
        Json::put(entry, "name", set.name);
    }
    auto object = Json::Value::object();
    object["sets"] = std::move(list);
    Json::put(object, "selectedSetID", selectedSetID);
    defaults.setValue(kStoredUnder, Json::compactText(object));
}

std::size_t UnitCatalog::selectedSetIndex() const {
    const auto found = std::find_if(sets.begin(), sets.end(),
                                    [&](const auto& set) { return set.id == selectedSetID; });
    return found == sets.end() ? 0 : static_cast<std::size_t>(found - sets.begin());
}

void UnitCatalog::selectSet(std::string_view id) {
    if (std::any_of(sets.begin(), sets.end(), [&](const auto& set) { return set.id == id; }))
        selectedSetID = id;
}

std::string UnitCatalog::addSet(std::string_view name) {
    auto wanted = Text::pathSafeLabel(name);
    if (wanted.empty())
        wanted = nextEkipName();
    const auto found = std::find_if(sets.begin(), sets.end(), [&](const auto& set) {
        return Text::caseFolded(set.name) == Text::caseFolded(wanted);
    });
    if (found != sets.end()) {
        selectedSetID = found->id;
        return found->name;
    }
    selectedSetID = sets.emplace_back(newSet(wanted)).id;
    return wanted;
}

void UnitCatalog::renameSelectedSet(std::string_view name) {
    const auto wanted = Text::pathSafeLabel(name);
    if (!wanted.empty())
        sets[selectedSetIndex()].name = wanted;
}

void UnitCatalog::deleteSelectedSet() {
    if (sets.size() < 2)
        return;
    const auto index = selectedSetIndex();
    sets.erase(sets.begin() + static_cast<std::ptrdiff_t>(index));
    selectedSetID = sets[std::min(index, sets.size() - 1)].id;
}

std::optional<std::string> UnitCatalog::addUnit(std::string_view name) {
    const auto wanted = Text::pathSafeLabel(name);
    if (wanted.empty())
        return std::nullopt;
    if (std::find(units.begin(), units.end(), wanted) == units.end())
        units.push_back(wanted);
    return wanted;
}

void UnitCatalog::removeUnit(std::string_view name) {
    std::erase(units, name);
}

std::string UnitCatalog::nextEkipName() const {
    int highest = 0;
    for (const auto& set : sets) {
        if (Text::asciiLowercased(set.name).starts_with("ekip"))
            highest = std::max(highest, number(set.name.substr(kEkip.size())).value_or(0));
    }
    return std::string(kEkip) + std::to_string(highest + 1);
}

} // namespace slatewise
