#include "VolumeTable.h"

#include "Platform/AppInfo.h"
#include "Platform/Error.h"
#include "Platform/ProcessEnd.h"
#include "Platform/Text.h"
#include "Volumes/VolumeMonitor.h"
#include "offload/UsageFailure.h"

#include <CLI/CLI.hpp>

#include <QCoreApplication>

#include <clocale>
#include <cstdlib>
#include <iostream>

namespace {

using namespace slatewise;

constexpr const char* kDescription =
    "Lists the volumes of this machine, and what each is taken for and why. Prints the list again\n"
    "whenever it changes, until Ctrl-C.";

void print(const std::vector<ClassifiedVolume>& volumes) {
    std::cout << tool::volumeTable(volumes) << std::endl;
}

std::string folderNames(const VolumesRoot& root) {
    std::string names;
    for (const auto& folder : root.paths())
        names += (names.empty() ? "" : ", ") + Text::visible(folder.native());
    return names;
}

int follow(VolumesRoot root) {
    std::cerr << "Watching " << folderNames(root) << " until Ctrl-C\n";
    VolumeMonitor monitor(std::move(root));
    monitor.onChange = [&] {
        print(monitor.currentVolumes());
        if (!std::cout)
            QCoreApplication::exit(1);
    };
    monitor.start();
    return QCoreApplication::exec();
}

constexpr int kWrongUsage = 2;

int list(int count, char** words) {
    const QCoreApplication application(count, words);
    CLI::App program(kDescription, "slatewise-volumes");
    // Its table is in English, too.
    tool::tellUsageFailuresPlainly(program, AppLanguage::English);
    program.set_version_flag("--version",
                             std::string("slatewise-volumes ") + std::string(AppInfo::version));
    std::string folder;
    bool onlyOnce = false;
    program.add_option("--root", folder, "Folder to look in instead of where media are mounted")
        ->type_name("FOLDER");
    program.add_flag("--once", onlyOnce, "List the volumes of this moment and end");
    CLI11_PARSE(program, count, words);

    if (!folder.empty() && !std::filesystem::is_directory(folder)) {
        std::cerr << "slatewise-volumes: " << Text::visible(folder) << " is not a folder\n";
        return kWrongUsage;
    }
    auto root =
        folder.empty() ? VolumesRoot::ofThisDesktop() : VolumesRoot(std::filesystem::path(folder));
    if (!onlyOnce)
        return follow(std::move(root));
    VolumeMonitor monitor(std::move(root));
    monitor.refresh();
    print(monitor.currentVolumes());
    return std::cout ? EXIT_SUCCESS : EXIT_FAILURE;
}

int run(int count, char** words) {
    try {
        return list(count, words);
    } catch (const std::exception& failure) {
        std::cerr << "slatewise-volumes: " << Text::visible(describe(failure)) << '\n';
        return EXIT_FAILURE;
    }
}

} // namespace

int main(int count, char** words) {
    (void)std::setlocale(LC_ALL, "");
    sayWhatEndsIt("slatewise-volumes");
    endProcess(run(count, words));
}
