#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace slatewise {

/// Asks the user for a folder. Implemented by whoever has a window.
class FolderChooser {
public:
    using Answer = std::function<void(std::optional<std::filesystem::path>)>;

    virtual ~FolderChooser() = default;

    /// Shows a panel with `message` and, on its button, `prompt`, that starts in the user's home
    /// folder and can make folders. Calls `answer` once, later or at once, on the GUI thread; with
    /// nothing when the user cancels.
    virtual void choose(const std::string& message, const std::string& prompt, Answer answer) = 0;
};

} // namespace slatewise
