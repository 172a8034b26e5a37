#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace slatewise {

/// The user's stored settings: texts under keys, in one INI file. May be used from any thread.
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

    /// Stores a value at once. A file that cannot be written costs the value and is not reported.
    void setValue(std::string_view key, std::string_view value);

    /// Removes a stored value at once.
    void removeValue(std::string_view key);

    /// From here on values are read from the file as before, but none is written any more: what is
    /// set or removed holds until the process ends.
    void keepChangesInMemory();

private:
    struct Storage;
    std::unique_ptr<Storage> storage_;
};

} // namespace slatewise
