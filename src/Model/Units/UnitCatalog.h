#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace slatewise {

class UserDefaults;

/// One crew.
struct ProductionSet {
    /// A UUID in upper case.
    std::string id;
    std::string name;

    friend bool operator==(const ProductionSet&, const ProductionSet&) = default;
};

/// The crews of a production and its camera units. Units are one list that all crews share; it
/// begins anew with each start of the program, the crews are stored. A value; no operation fails.
struct UnitCatalog {
    /// In the order of their making; at least one.
    std::vector<ProductionSet> sets;
    std::string selectedSetID;
    /// In the order in which they are shown.
    std::vector<std::string> units;

    /// Two fresh crews and the units that most productions have.
    static UnitCatalog blank();

    /// The stored crews, under today's names; a blank catalog when there are none to be read.
    static UnitCatalog load(UserDefaults& defaults);
    void save(UserDefaults& defaults) const;

    const ProductionSet& selectedSet() const { return sets[selectedSetIndex()]; }
    /// 0 when no set has the selected id.
    std::size_t selectedSetIndex() const;
    /// Does nothing for an id that no set has.
    void selectSet(std::string_view id);

    /// Selects the set of that name, in whatever case, or a new one, and gives its name. Without a
    /// name the next numbered one is made.
    std::string addSet(std::string_view name);
    /// A blank name changes nothing.
    void renameSelectedSet(std::string_view name);
    /// The last set stays.
    void deleteSelectedSet();

    /// The name as it is listed now; empty when it was blank.
    std::optional<std::string> addUnit(std::string_view name);
    void removeUnit(std::string_view name);

    /// "Ekip" and the number after the highest in use.
    std::string nextEkipName() const;

    friend bool operator==(const UnitCatalog&, const UnitCatalog&) = default;
};

} // namespace slatewise
