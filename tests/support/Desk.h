#pragma once

#include "Model/AppModel.h"
#include "Model/FolderChooser.h"
#include "support/Files.h"
#include "support/Waiting.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace slatewise::test {

/// An application model with a user, volumes and a desktop of its own. Volumes are folders; what
/// would happen on a desktop is noted.
class Desk : public FolderChooser {
public:
    Desk();
    ~Desk() override;

    /// The program started anew, with what the user has stored.
    AppModel& start();
    /// The program's end; what is under way is left alone.
    void quit() { model_.reset(); }
    AppModel& model() { return *model_; }

    /// Mounts a card or a disk, which is a folder of that name. The model learns at the next
    /// `applyVolumes`. Gives its id. A file that is named as a clip has programs started that look
    /// for its facts.
    QString mountCard(const std::string& name,
                      const std::map<std::string, std::string>& files = {{"A.dat", "a"}});
    QString mountDisk(const std::string& name);
    ClassifiedVolume& volume(const QString& id);
    void unmount(const QString& id);

    /// Ticks a card and names its unit.
    void selectCard(const QString& id, const QString& unit);

    /// Presses the button and waits until all is over.
    void copy();
    /// Runs the event loop until the condition holds; fails the test when it does not in time.
    static void waitUntil(const std::function<bool()>& condition,
                          std::chrono::seconds limit = kLongestWait);

    /// The user's profile of the reporting service, which is at this address.
    static void leaveServiceProfile(const std::string& url);

    void choose(const std::string& message, const std::string& prompt, Answer answer) override;

    TemporaryFolder folder;
    UserDefaults defaults{folder / "settings.ini"};
    Surroundings surroundings;
    std::vector<ClassifiedVolume> volumes;
    std::vector<std::filesystem::path> ejected;
    std::vector<std::filesystem::path> opened;
    std::vector<std::filesystem::path> shown;
    /// What the user answers to every panel, and what the last one said.
    std::optional<std::filesystem::path> choice;
    std::string asked;

private:
    QString mount(const std::string& name, VolumeKind kind);

    std::unique_ptr<AppModel> model_;
};

} // namespace slatewise::test
