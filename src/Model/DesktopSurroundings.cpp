#include "Model/Surroundings.h"

#include "Platform/Desktop/DesktopServices.h"
#include "Platform/Disks/MountPoints.h"
#include "Storage/UserStore.h"
#include "Volumes/DiskUtilClient.h"
#include "Volumes/VolumeMonitor.h"

namespace slatewise {

Surroundings Surroundings::ofThisDesktop(UserDefaults& defaults, const VolumesRoot& volumesRoot) {
    Surroundings surroundings;
    surroundings.defaults = &defaults;
    const auto monitor = std::make_shared<VolumeMonitor>(volumesRoot);
    surroundings.currentVolumes = [monitor] {
        return monitor->currentVolumes();
    };
    surroundings.lookAtVolumes = [monitor] {
        monitor->refresh();
    };
    surroundings.watchVolumes = [monitor](std::function<void()> onChange) {
        monitor->onChange = std::move(onChange);
        monitor->start();
    };
    surroundings.volumeFacts = factsOfThisMachine;
    surroundings.isBare = [](const auto& folder) {
        return MountPoints::isBare(folder);
    };
    surroundings.eject = [](const std::filesystem::path& mountPoint) {
        return DiskUtilClient::eject(mountPoint);
    };
    surroundings.openFile = DesktopServices::openFile;
    surroundings.showFolder = DesktopServices::showFolder;
    surroundings.openStore = openUserStore;
    return surroundings;
}

} // namespace slatewise
