#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace slatewise {

class UserDefaults;

/// Names that decide what is not copied. Compared exactly, case-sensitively.
using SkipNames = std::set<std::string, std::less<>>;

/// What the user settled about offloads. A value; a run works on a copy of its own.
struct OffloadSettings {
    OffloadSettings();

    /// Path template of a session's folder.
    std::string folderTemplate;
    /// Eject each card when all its destinations have ended well.
    bool ejectAfterSuccess = false;
    /// Names the user added to the skip rules, sorted as a person would.
    std::vector<std::string> extraExcludes;
    /// Names of the default skip set that are to be copied anyway.
    std::vector<std::string> copyDespiteSkipNames;
    /// Hash the source only; nothing is written to any destination.
    bool verifyOnly = false;
    /// Folder of the local report archive; empty for the default one.
    std::string outputFolderPath;
    std::string projectName;
    /// Write an ASC Media Hash List beside each copy.
    bool writesHashList = false;
    /// Who stands in such a list, as what and where; empty for nobody.
    std::string listAuthor;
    std::string listRole;
    std::string listLocation;

    /// The stored settings. Whatever cannot be read gives the defaults; never fails.
    static OffloadSettings load(const UserDefaults& defaults);
    void save(UserDefaults& defaults) const;

    /// The names in force: the default ones that are not switched off, and the user's own.
    SkipNames skipNames() const;

    bool isDefaultSkipped(std::string_view name) const;
    /// Does nothing for a name that is not in the default skip set.
    void setDefaultSkipped(std::string_view name, bool skipped);

    /// Takes a name as a user types it. Naming a default one switches that one on again.
    void addExclude(std::string_view typed);
    void removeExclude(std::string_view name);

    friend bool operator==(const OffloadSettings&, const OffloadSettings&) = default;
};

} // namespace slatewise
