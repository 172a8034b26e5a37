#pragma once

#include "App/DitApplication.h"
#include "support/Files.h"
#include "support/MountedVolume.h"
#include "support/Waiting.h"

#include <QQuickItem>
#include <QString>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace slatewise::test {

/// Someone at the window, with a machine to plug cards and disks into. Sees what is on the screen,
/// and acts by mouse and keyboard alone. The program is the one that users start; only its folders
/// are the test's own.
class Person {
public:
    Person();
    ~Person();

    /// Plugs in a volume that the machine mounts under its label.
    MountedVolume& plugIn(const std::string& label, std::int64_t sizeBytes);
    /// As a card with files on it, `clipBytes` in each, of which the first is asked for its facts
    /// as a clip.
    MountedVolume& plugInCard(const std::string& label, int clips = 2,
                              std::size_t clipBytes = 200'000);

    /// Waits until the row of that volume is there, in "cards" or "disks", and moves and fades in
    /// no more: a person does not hit what is still coming in.
    QQuickItem* row(const char* column, const QString& name);
    /// The row if it is there now.
    QQuickItem* sees(const char* column, const QString& name);

    /// The visible item of that name, the topmost one.
    QQuickItem* see(const QString& objectName, QQuickItem* within = nullptr);
    /// The visible chip with that text.
    QQuickItem* chip(const QString& text);
    /// What an item shows.
    static QString text(QQuickItem* item);

    void click(QQuickItem* item);
    void press(Qt::Key key);

    /// Ticks a card with its mark and names its unit.
    void choose(const QString& card, const QString& unit);
    /// Ticks a disk unless it is ticked.
    void chooseDisk(const QString& disk);

    /// Plugs in a card with that many clips and a disk with room for several of it, and settles all
    /// there is to settle before Copy. Gives the card.
    MountedVolume& makeReady(int clips, std::size_t clipBytes);

    /// Looks again and again until it holds; fails the test when it does not in time.
    static void wait(const char* what, const std::function<bool()>& condition,
                     std::chrono::seconds limit = kLongestWait);

    /// A person does not hit what has just taken another's place, as Copy and Stop do.
    static void settle();

    /// Waits until the copy has ended one way or the other, and gives the line that tells.
    QString outcome();

    DitApplication& application() { return *application_; }
    /// What the application for reports was asked to show.
    std::vector<std::filesystem::path> openedReports() const;
    std::string logText() const;

private:
    /// Folders of this user, in place before anything of the program runs.
    struct Home {
        explicit Home(const TemporaryFolder& folder);
    };

    TemporaryFolder folder_;
    Home home_;
    UserDefaults defaults_;
    std::unique_ptr<DitApplication> application_;
    std::vector<std::unique_ptr<MountedVolume>> volumes_;
};

} // namespace slatewise::test
