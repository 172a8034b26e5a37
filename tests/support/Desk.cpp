#include "support/Desk.h"

#include "Model/QtText.h"
#include "Service/ServiceProfileFile.h"
#include "Storage/AppDatabase.h"
#include "Storage/SupportPaths.h"
#include "Storage/UserStore.h"
#include "support/Process.h"
#include "support/Waiting.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <thread>

namespace slatewise::test {

namespace {

/// A large card on a busy machine; the limit of a whole test is not much longer.
constexpr std::chrono::minutes kLongestBatch{4};

} // namespace

Desk::Desk() {
    becomeUserIn(folder / "user");
    surroundings.defaults = &defaults;
    surroundings.folderChooser = this;
    surroundings.currentVolumes = [this] {
        return volumes;
    };
    surroundings.volumeFacts = [](const auto&) {
        VolumeFacts facts;
        facts.deviceIdentifier = "disk-of-all-folders";
        return facts;
    };
    surroundings.eject = [this](const auto& mountPoint) {
        ejected.push_back(mountPoint);
        return DiskUtilClient::Ejected();
    };
    surroundings.openFile = [this](const auto& file) {
        opened.push_back(file);
    };
    surroundings.showFolder = [this](const auto& shownFolder) {
        shown.push_back(shownFolder);
    };
    surroundings.openStore = openUserStore;
}

Desk::~Desk() = default;

AppModel& Desk::start() {
    model_.reset();
    model_ = std::make_unique<AppModel>(surroundings);
    return *model_;
}

QString Desk::mount(const std::string& name, VolumeKind kind) {
    std::filesystem::create_directories(folder / name);
    auto& volume = volumes.emplace_back();
    volume.facts.mountPoint = folder / name;
    volume.facts.volumeName = name;
    volume.facts.deviceIdentifier = "dev-" + name;
    volume.kind = kind;
    return toQString(volume.id());
}

QString Desk::mountCard(const std::string& name, const std::map<std::string, std::string>& files) {
    for (const auto& [path, content] : files)
        writeFile(folder / name / path, content);
    return mount(name, VolumeKind::CameraCard);
}

QString Desk::mountDisk(const std::string& name) {
    return mount(name, VolumeKind::Destination);
}

ClassifiedVolume& Desk::volume(const QString& id) {
    const auto found = std::find_if(volumes.begin(), volumes.end(), [&](const auto& volume) {
        return toQString(volume.id()) == id;
    });
    if (found == volumes.end())
        throw std::runtime_error("not mounted: " + id.toStdString());
    return *found;
}

void Desk::unmount(const QString& id) {
    std::erase_if(volumes, [&](const auto& volume) { return toQString(volume.id()) == id; });
}

void Desk::selectCard(const QString& id, const QString& unit) {
    model().cards()->toggle(id);
    model().cards()->focus(id);
    model().units()->tapUnit(unit);
}

void Desk::copy() {
    bool isOver = false;
    const auto connection =
        QObject::connect(&model(), &AppModel::recentSessionsRead, [&isOver] { isOver = true; });
    model().batch()->start();
    if (model().batch()->isBusy())
        waitUntil([&] { return isOver; }, kLongestBatch);
    QObject::disconnect(connection);
}

void Desk::waitUntil(const std::function<bool()>& condition, std::chrono::seconds limit) {
    const auto letOthersWork = [] {
        QCoreApplication::processEvents();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    };
    if (!test::waitUntil(condition, limit, letOthersWork))
        throw std::runtime_error("waited in vain");
}

void Desk::leaveServiceProfile(const std::string& url) {
    const auto folder = SupportPaths::applicationSupport();
    writeFile(folder / "draft",
              R"({"accountID":"acc1","saasAPIURL":")" + url + R"(","presenceToken":"t"})");
    std::filesystem::permissions(folder / "draft", std::filesystem::perms::owner_read);
    std::filesystem::rename(folder / "draft", folder / ServiceProfileFile::fileName);
}

void Desk::choose(const std::string& message, const std::string& prompt, Answer answer) {
    asked = message + "|" + prompt;
    answer(choice);
}

} // namespace slatewise::test
