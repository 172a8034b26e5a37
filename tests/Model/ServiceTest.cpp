#include "Model/QtText.h"
#include "Storage/AppDatabase.h"
#include "Storage/SupportPaths.h"
#include "support/Desk.h"
#include "support/RecordingServer.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <optional>

using namespace slatewise;
using namespace slatewise::test;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

namespace {

std::vector<OutboxRecord> waitingReports() {
    return AppDatabase(SupportPaths::databaseURL()).pendingOutbox();
}

const std::vector<std::string> kVerifiedSession = {"session/start", "session/log_file",
                                                   "dit/inventory", "session/complete",
                                                   "session/notify_event"};

std::vector<std::string> joined(std::initializer_list<std::vector<std::string>> lists) {
    std::vector<std::string> all;
    for (const auto& list : lists)
        all.insert(all.end(), list.begin(), list.end());
    return all;
}

} // namespace

TEST(ServiceOfTheModel, ReportsWaitUntilThereIsAProfile) {
    Desk desk;
    RecordingServer server;
    const auto card = desk.mountCard("A001");
    desk.mountDisk("SSD1");
    auto& model = desk.start();
    EXPECT_EQ(model.saasLine(), "Standalone, without reporting service");
    desk.selectCard(card, "CamA");
    desk.copy();
    EXPECT_THAT(waitingReports(), SizeIs(1));
    EXPECT_EQ(waitingReports()[0].attempts, 0);

    Desk::leaveServiceProfile(server.url());
    Desk::waitUntil([] { return waitingReports().empty(); });
    EXPECT_EQ(model.saasLine(), toQString("Service: acc1 → " + server.url()));
    model.setLanguageCode("tr");
    EXPECT_EQ(model.saasLine(), toQString("Servis: acc1 → " + server.url()));
    EXPECT_THAT(server.paths(), ElementsAreArray(joined({{"presence"}, kVerifiedSession})));

    const auto file = SupportPaths::applicationSupport() / ServiceProfileFile::fileName;
    std::filesystem::permissions(file, std::filesystem::perms(0644));
    Desk::waitUntil([&] { return model.saasLine().contains("kullanılmıyor: başkaları"); });
    std::filesystem::remove(file);
    Desk::waitUntil([&] { return model.saasLine().startsWith("Bağımsız"); });
}

TEST(ServiceOfTheModel, HearsOfEachCardAndOfEachPairBeforeTheNextBegins) {
    Desk desk;
    RecordingServer server;
    Desk::leaveServiceProfile(server.url());
    const auto card = desk.mountCard("A001");
    desk.mountDisk("SSD1");
    const auto second = desk.mountDisk("SSD2");
    std::vector<std::size_t> requestsBefore;
    desk.surroundings.runEngine = [&](const auto& request, const auto& observer, auto stop) {
        requestsBefore.push_back(server.requests().size());
        return CopyEngine::run(request, observer, stop);
    };
    auto& model = desk.start();
    // The card was seen, and what waited at the start was looked through.
    Desk::waitUntil([&] { return server.requests().size() == 2; });
    EXPECT_THAT(server.paths(), UnorderedElementsAre("presence", "session/notify_event"));
    const auto requests = server.requests();
    EXPECT_TRUE(std::any_of(requests.begin(), requests.end(), [](const auto& request) {
        return request.body == R"({"account_id":"acc1","drive_name":"A001","event":"detected"})";
    }));
    model.destinations()->toggle(model.destinations()->rows()[0].volumeID);
    model.destinations()->toggle(second);
    desk.selectCard(card, "CamA");
    desk.copy();
    EXPECT_TRUE(model.batch()->standing() == BatchControl::Succeeded);
    EXPECT_THAT(requestsBefore, ElementsAre(2, 8));
    const auto paths = server.paths();
    EXPECT_THAT(
        std::vector(paths.begin() + 2, paths.end()),
        ElementsAreArray(joined({{"presence"}, kVerifiedSession, {"presence"}, kVerifiedSession})));
    EXPECT_THAT(waitingReports(), IsEmpty());
}

TEST(ServiceOfTheModel, WhoCancelsDoesNotWaitForTheNetwork) {
    Desk desk;
    std::atomic<bool> isSilent = false;
    std::optional<RecordingServer> server;
    server.emplace([&](const auto& request, auto) {
        if (request.line != "POST /api/session/start")
            return WireAnswer::of(200);
        isSilent = true;
        return WireAnswer::silence();
    });
    Desk::leaveServiceProfile(server->url());
    const auto card = desk.mountCard("A001");
    const auto first = desk.mountDisk("SSD1");
    const auto second = desk.mountDisk("SSD2");
    auto& model = desk.start();
    model.destinations()->toggle(first);
    model.destinations()->toggle(second);
    desk.selectCard(card, "CamA");
    model.batch()->start();
    Desk::waitUntil([&] { return isSilent.load(); });
    EXPECT_TRUE(model.batch()->isBusy()) << "the first pair's report is on its way";
    const auto begin = std::chrono::steady_clock::now();
    model.batch()->cancel();
    Desk::waitUntil([&] { return !model.batch()->isBusy(); });
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
    EXPECT_EQ(model.batch()->title(), "Failed: Cancelled.");
    EXPECT_THAT(waitingReports(), SizeIs(1));
    // What was under way goes on by itself and is settled in its time.
    server.reset();
    Desk::waitUntil([] { return waitingReports()[0].attempts == 1; });
}

TEST(OldReportFolders, GetReadableNamesWhereverTheyTurnUp) {
    Desk desk;
    const std::string id = "11111111-2222-3333-4444-555555555555";
    const auto card = desk.mountCard("A001");
    const auto disk = desk.mountDisk("SSD1");
    desk.start();
    desk.selectCard(card, "CamA");
    desk.copy();
    const auto set = [](const std::filesystem::path& folder) {
        return std::filesystem::directory_iterator(folder)->path();
    };
    const auto archive = desk.folder / "user/documents/SlatewiseDIT";
    const auto readable = set(archive).filename();

    // As an older version would have left them, in an archive and on disks known and new.
    const auto onDisk = desk.folder / "SSD1/reports";
    std::filesystem::rename(archive / readable, archive / id);
    std::filesystem::rename(onDisk / readable, onDisk / id);
    for (const auto* other : {"SSD2/reports", "Elsewhere"}) {
        std::filesystem::create_directories(desk.folder / other);
        std::filesystem::copy(archive / id, desk.folder / other / id);
    }
    const auto isMigrated = [&](const std::filesystem::path& root) {
        return std::filesystem::exists(root / readable) && !std::filesystem::exists(root / id);
    };
    auto& model = desk.start();
    Desk::waitUntil([&] { return isMigrated(archive) && isMigrated(onDisk); });

    desk.mountDisk("SSD2");
    model.volumes().apply();
    Desk::waitUntil([&] { return isMigrated(desk.folder / "SSD2/reports"); });

    desk.choice = desk.folder / "Elsewhere";
    model.reports()->pick();
    Desk::waitUntil([&] { return isMigrated(desk.folder / "Elsewhere"); });

    SessionRecord session;
    session.sessionRoot = (desk.folder / "SSD1").native();
    model.reports()->revealReports(session);
    Desk::waitUntil([&] { return desk.shown.size() == 1; });
    // Not away from under a set that is still being made readable.
    session.sessionRoot = (desk.folder / "SSD3").native();
    model.reports()->revealReports(session);
    Desk::waitUntil([&] { return desk.shown.size() == 2; });
    EXPECT_THAT(desk.shown, ElementsAre(onDisk, desk.folder / "Elsewhere"));
}
