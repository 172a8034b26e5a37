#include "App/Person.h"

#include "Platform/Text.h"
#include "support/Process.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QQuickWindow>
#include <QStyleHints>
#include <QtTest/QTest>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace slatewise::test {

namespace {

constexpr auto kLookAgain = std::chrono::duration<int, std::milli>(20);

void collect(QQuickItem* item, const std::function<bool(QQuickItem*)>& wanted,
             std::vector<QQuickItem*>& found) {
    if (!item->isVisible())
        return;
    if (wanted(item))
        found.push_back(item);
    for (auto* child : item->childItems())
        collect(child, wanted, found);
}

/// Puts a program into the PATH that notes in the folder of the user what it is asked to open. Qt
/// remembers the first that it finds, so one serves every person.
void installStandIn() {
    static const TemporaryFolder programs;
    const auto program = programs / "xdg-open";
    if (std::filesystem::exists(program))
        return;
    writeFile(program, "#!/bin/sh\nprintf '%s\\n' \"$1\" >> \"${XDG_DATA_HOME%/*}/opened\"\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    ::setenv("PATH", (programs.path().native() + ":" + std::getenv("PATH")).c_str(), 1);
}

} // namespace

Person::Home::Home(const TemporaryFolder& folder) {
    becomeUserIn(folder.path());
    installStandIn();
}

Person::Person() : home_(folder_), defaults_(folder_ / "config/settings.ini") {
    std::filesystem::create_directories(folder_ / "media");
    application_ = std::make_unique<DitApplication>(
        Surroundings::ofThisDesktop(defaults_, VolumesRoot(folder_ / "media")));
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&application_->window()));
}

Person::~Person() = default;

MountedVolume& Person::plugIn(const std::string& label, std::int64_t sizeBytes) {
    volumes_.push_back(std::make_unique<MountedVolume>(MountedVolume::FileSystem::Ext4, sizeBytes,
                                                       folder_ / "media" / label, ""));
    return *volumes_.back();
}

MountedVolume& Person::plugInCard(const std::string& label, int clips, std::size_t clipBytes) {
    const auto size = static_cast<std::int64_t>(clips) * static_cast<std::int64_t>(clipBytes);
    // What the file system keeps for itself comes on top.
    auto& card = plugIn(label, size + size / 4 + (32 << 20));
    const auto bytes = bytesOf(clipBytes);
    for (int clip = 1; clip <= clips; ++clip) {
        const auto name = "C00" + std::to_string(clip) + (clip == 1 ? ".MOV" : ".DAT");
        writeFile(card / "DCIM" / name, bytes);
    }
    return card;
}

QQuickItem* Person::see(const QString& objectName, QQuickItem* within) {
    std::vector<QQuickItem*> found;
    collect(
        within ? within : application_->window().contentItem(),
        [&](QQuickItem* item) { return item->objectName() == objectName; }, found);
    return found.empty() ? nullptr : found.back();
}

QQuickItem* Person::chip(const QString& text) {
    std::vector<QQuickItem*> found;
    collect(
        see("picker"),
        [&](QQuickItem* item) {
            return item->property("chosen").isValid() && item->property("text") == text;
        },
        found);
    return found.empty() ? nullptr : found.front();
}

QQuickItem* Person::sees(const char* column, const QString& name) {
    std::vector<QQuickItem*> found;
    collect(
        see(column),
        [&](QQuickItem* item) {
            return item->property("volumeID").isValid() && item->property("name") == name;
        },
        found);
    return found.empty() ? nullptr : found.front();
}

QQuickItem* Person::row(const char* column, const QString& name) {
    // An animation that is yet to begin has not moved it at the next look either.
    constexpr int kLooksAlike = 3;
    QQuickItem* row = nullptr;
    QPointF place;
    int alike = 0;
    wait("row that has come to rest", [&] {
        auto* const before = std::exchange(row, sees(column, name));
        const auto placeBefore = std::exchange(place, row ? row->mapToScene({}) : QPointF());
        const bool rests = row && row == before && place == placeBefore && row->opacity() >= 1;
        alike = rests ? alike + 1 : 0;
        return alike >= kLooksAlike;
    });
    return row;
}

void Person::settle() {
    constexpr int kBeyond = 50;
    QTest::qWait(QGuiApplication::styleHints()->mouseDoubleClickInterval() + kBeyond);
}

QString Person::text(QQuickItem* item) {
    return item ? item->property("text").toString() : QString();
}

void Person::click(QQuickItem* item) {
    ASSERT_NE(item, nullptr) << "nothing there to click on";
    const auto place = item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
    QTest::mouseClick(&application_->window(), Qt::LeftButton, Qt::NoModifier, place.toPoint());
}

void Person::press(Qt::Key key) {
    QTest::keyClick(&application_->window(), key);
}

void Person::choose(const QString& card, const QString& unit) {
    click(see("mark", row("cards", card)));
    click(row("cards", card));
    click(chip(unit));
}

void Person::chooseDisk(const QString& disk) {
    // The only disk there is comes ticked.
    if (!row("disks", disk)->property("selected").toBool())
        click(see("mark", row("disks", disk)));
}

MountedVolume& Person::makeReady(int clips, std::size_t clipBytes) {
    auto& card = plugInCard("A001", clips, clipBytes);
    plugIn("SHUTTLE", 4 * clips * static_cast<std::int64_t>(clipBytes));
    choose("A001", "CamA");
    chooseDisk("SHUTTLE");
    return card;
}

void Person::wait(const char* what, const std::function<bool()>& condition,
                  std::chrono::seconds limit) {
    ASSERT_TRUE(waitUntil(condition, limit, [] { QTest::qWait(kLookAgain.count()); }))
        << "waited in vain for: " << what;
}

QString Person::outcome() {
    wait("end of the copy",
         [this] { return see("copy") && (see("successMark") || see("failureMark")); });
    return text(see("title", see("status")));
}

std::vector<std::filesystem::path> Person::openedReports() const {
    std::vector<std::filesystem::path> reports;
    if (!std::filesystem::exists(folder_ / "opened"))
        return reports;
    const auto notes = readFile(folder_ / "opened");
    for (std::size_t begin = 0; begin < notes.size();) {
        const auto end = notes.find('\n', begin);
        const auto url = QUrl(QString::fromStdString(notes.substr(begin, end - begin)));
        reports.emplace_back(url.toLocalFile().toStdString());
        begin = end + 1;
    }
    return reports;
}

std::string Person::logText() const {
    return logOfUserIn(folder_.path());
}

} // namespace slatewise::test
