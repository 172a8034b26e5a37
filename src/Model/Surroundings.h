#pragma once

#include "Volumes/VolumeRecords.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace slatewise {

class AppDatabase;
class FolderChooser;
class UserDefaults;

/// What the application model needs of the world around it. The desktop's own is
/// `Surroundings::ofThisDesktop`; a program without a window leaves out what it has no use for, and
/// a test puts its own in place. What is empty does nothing and finds nothing.
struct Surroundings {
    /// Whether a card may be copied that nobody has named a unit for.
    enum class UnitRule { Required, Optional };

    /// Outlives the model, as the chooser does.
    UserDefaults* defaults = nullptr;
    FolderChooser* folderChooser = nullptr;

    /// The mounted volumes as they stand. Quick.
    std::function<std::vector<ClassifiedVolume>()> currentVolumes;
    /// Starts watching; from then on `onChange` is called on the GUI thread. Called once.
    std::function<void(std::function<void()> onChange)> watchVolumes;
    /// Facts of the volume that holds a folder.
    std::function<VolumeFacts(const std::filesystem::path&)> volumeFacts;
    /// Blocks; any thread; throws when the volume stays.
    std::function<void(const std::filesystem::path& mountPoint)> eject;

    /// Opens a file with the application the user has for it.
    std::function<void(const std::filesystem::path&)> openFile;
    /// Shows a folder in the user's file manager.
    std::function<void(const std::filesystem::path&)> showFolder;

    /// The store of the process; one in memory when the file cannot be opened.
    std::function<std::shared_ptr<AppDatabase>()> openStore;

    UnitRule unitRule = UnitRule::Required;

    /// The store in the user's folder; a failure to open it is logged.
    static std::shared_ptr<AppDatabase> userStore();
};

} // namespace slatewise
