#pragma once

#include "Batch/BatchSurroundings.h"
#include "Model/Volumes/ContentSizes.h"
#include "Volumes/VolumeRecords.h"
#include "Volumes/VolumesRoot.h"

#include <chrono>
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
struct Surroundings : BatchSurroundings {
    /// Outlives the model, as the chooser does.
    UserDefaults* defaults = nullptr;
    FolderChooser* folderChooser = nullptr;

    /// The mounted volumes as they stood at the last look. Quick.
    std::function<std::vector<ClassifiedVolume>()> currentVolumes;
    /// Looks at once. Blocks, as long as a volume does that does not answer; any thread.
    std::function<void()> lookAtVolumes;
    /// How long the start waits for volumes before it goes on without them. One that answers needs
    /// milliseconds.
    std::chrono::milliseconds patienceAtStart = std::chrono::seconds(2);
    /// Goes on looking by itself; from then on `onChange` is called on the GUI thread. Called once.
    std::function<void(std::function<void()> onChange)> watchVolumes;
    /// Facts of the volume that holds a folder. Blocks; any thread.
    std::function<VolumeFacts(const std::filesystem::path&)> volumeFacts;
    /// Whether a folder is one that a disk is meant to be mounted on, and none is. Blocks; any
    /// thread.
    std::function<bool(const std::filesystem::path&)> isBare;
    /// Measures a volume. Blocks; any thread.
    std::function<Measurement(const MeasuringEntry&, const SkipNames&)> measure =
        slatewise::measure;
    /// By which progress is timed.
    std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
    /// Opens a file with the application the user has for it.
    std::function<void(const std::filesystem::path&)> openFile;
    /// Shows a folder in the user's file manager.
    std::function<void(const std::filesystem::path&)> showFolder;

    /// The store of the process; one in memory when the file cannot be opened.
    std::function<std::shared_ptr<AppDatabase>()> openStore;

    /// The machine's volumes below that folder, the user's store and applications. It still lacks
    /// the folder chooser of a window.
    static Surroundings
    ofThisDesktop(UserDefaults& defaults,
                  const VolumesRoot& volumesRoot = VolumesRoot::ofThisDesktop());

    /// What the machine knows of the disk that holds a folder.
    static VolumeFacts factsOfThisMachine(const std::filesystem::path& folder);
};

} // namespace slatewise
