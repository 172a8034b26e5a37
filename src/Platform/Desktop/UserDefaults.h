#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace slatewise {

/// The user's stored settings: texts under keys, in one INI file. May be used from any thread, and
/// never waits for a disk: the file is read at the construction, and changes are written aside.
///
/// From some moment on every change can be kept to this process, for a program whose arguments
/// outrank what is stored.
class UserDefaults {
public:
    /// Settings in the given file, which need not exist yet.
    explicit UserDefaults(const std::filesystem::path& file);
    ~UserDefaults();
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;

    /// The settings of this user, below the XDG configuration folder. Opened at the first call.
    static UserDefaults& standard();

    std::optional<std::string> value(std::string_view key) const;

    /// Stores a value; it is on its way to the file when this returns. A file that cannot be
    /// written costs the value and is not reported.
    void setValue(std::string_view key, std::string_view value);

    /// Removes a stored value likewise.
    void removeValue(std::string_view key);

    /// From here on values are read from the file as before, but none is written any more: what is
    /// set or removed holds until the process ends.
    void keepChangesInMemory();

    /// Waits for what was changed so far to be in the file. The destructor does so too; this is for
    /// a process that ends without it.
    void waitUntilWritten();

private:
    struct Storage;
    std::unique_ptr<Storage> storage_;
};

} // namespace slatewise
