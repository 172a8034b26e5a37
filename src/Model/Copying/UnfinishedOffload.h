#pragma once

#include <optional>
#include <string>

namespace slatewise {

class L10n;

class UserDefaults;

/// The pair that a batch is at work on, kept where it outlives the program: whatever ends that, the
/// next start can say what was left where. A value.
struct UnfinishedOffload {
    /// As they are to be shown.
    std::string card;
    std::string disk;
    /// Where its copies come to lie; empty while there is no folder.
    std::string folder;

    static std::optional<UnfinishedOffload> load(const UserDefaults& defaults);
    void save(UserDefaults& defaults) const;
    static void forget(UserDefaults& defaults);

    std::string text(L10n l10n) const;
};

} // namespace slatewise
