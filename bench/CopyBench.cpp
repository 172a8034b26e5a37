#include "Benches.h"
#include "Floor.h"
#include "Scratch.h"

#include "Offload/CopyEngine.h"

#include <fmt/format.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>
#include <stdexcept>

namespace slatewise::bench {

namespace {

constexpr int kRounds = 5;
constexpr std::int64_t kMebibyte = 1 << 20;

struct Case {
    const char* name;
    int files;
    std::int64_t fileBytes;
    int filesPerFolder;
};

/// As the program does it; `formats` are what a hash list beside the copy wants of each file.
void copyWithTheProgram(const std::filesystem::path& from, const std::filesystem::path& to,
                        const std::vector<HashFormat>& formats) {
    CopyEngine::Request request;
    request.planFormats = [&](const RootFolder&, std::span<const InventoryEntry>,
                              const std::stop_token&) {
        return [&](const std::string&) {
            return formats;
        };
    };
    request.card.facts.mountPoint = from;
    request.card.facts.volumeName = "card";
    request.destination.facts.mountPoint = to.parent_path();
    request.settings.folderTemplate = to.filename();
    request.now = Clock::now();
    // A watcher as light as a window's: whoever shows progress throws most of it away.
    const CopyEngine::Observer observer = {
        .progress = [](const OffloadPhase&) {}, .log = {}, .problem = {}, .sessionRootCreated = {}};
    if (CopyEngine::run(request, observer, {}).status != OutcomeStatus::Verified)
        throw std::runtime_error("not verified");
}

void copyPlainly(const std::filesystem::path& from, const std::filesystem::path& to) {
    copyWithTheProgram(from, to, {});
}

void copyForAList(const std::filesystem::path& from, const std::filesystem::path& to) {
    copyWithTheProgram(from, to, {HashFormat::XXH128});
}

/// As careful people do it: copy, then read both sides anew and compare.
void copyAndSum(const std::filesystem::path& from, const std::filesystem::path& to) {
    shell(fmt::format("rsync -a {}/ {}/ && sync -f {}", shellQuoted(from), shellQuoted(to),
                      shellQuoted(to)));
    dropCaches({from, to});
    const std::string sum = "find . -type f -print0 | sort -z | xargs -0 sha256sum > ";
    shell(
        fmt::format("cd {} && {} {}", shellQuoted(from), sum, shellQuoted(to.native() + ".from")));
    shell(fmt::format("cd {} && {} {}", shellQuoted(to), sum, shellQuoted(to.native() + ".to")));
    shell(fmt::format("cmp {0}.from {0}.to && rm {0}.from {0}.to", shellQuoted(to)));
}

/// The same with a program that copies several files at a time and has a check of its own.
void copyAndCheck(const std::filesystem::path& from, const std::filesystem::path& to) {
    shell(fmt::format("rclone copy {} {} && sync -f {}", shellQuoted(from), shellQuoted(to),
                      shellQuoted(to)));
    dropCaches({from, to});
    shell(fmt::format("rclone check --download {} {} 2> /dev/null", shellQuoted(from),
                      shellQuoted(to)));
}

using Way = std::function<void(const std::filesystem::path&, const std::filesystem::path&)>;

void measureCase(const std::filesystem::path& folder, const Case& example) {
    std::vector<std::pair<std::string, Way>> ways = {{"floor", copyAtTheFloor},
                                                     {"slatewise", copyPlainly},
                                                     {"slatewise, with hash list", copyForAList},
                                                     {"rsync + sha256sum", copyAndSum},
                                                     {"rclone copy + check", copyAndCheck}};
    if (example.fileBytes > kMebibyte)
        ways.insert(ways.begin() + 1, {"pipeline", copyInAPipeline});
    const auto card = folder / "card";
    makeFiles(card, example.files, example.fileBytes, example.filesPerFolder);
    std::map<std::string, std::vector<double>> seconds;
    for (int round = 0; round < kRounds; ++round) {
        for (const auto& way : ways) {
            const auto copy = folder / "copy";
            dropCaches({card});
            seconds[way.first].push_back(wallSeconds([&] { way.second(card, copy); }));
            std::filesystem::remove_all(copy);
        }
    }
    const double megabytes =
        static_cast<double>(example.files) * static_cast<double>(example.fileBytes) / 1e6;
    const double floor = median(seconds["floor"]);
    fmt::print("Copy and proof of {}, median of {} rounds, cold caches\n", example.name, kRounds);
    for (const auto& [name, way] : ways) {
        const double typical = median(seconds[name]);
        record(example.name, name, "seconds", typical);
        record(example.name, name, "of_floor", typical / floor);
        if (const auto pipeline = seconds.find("pipeline"); pipeline != seconds.end())
            record(example.name, name, "of_pipeline", typical / median(pipeline->second));
        fmt::print("  {:<26}{:8.2f} s  {:8.0f} MB/s  {:6.2f} x floor\n", name, typical,
                   megabytes / typical, typical / floor);
    }
    fmt::print("\n");
    std::filesystem::remove_all(card);
}

/// What a run of the program cost.
struct Cost {
    double seconds = 0;
    double megabytes = 0;
};

/// Runs the program with a user of its own and removes what it and its card left.
Cost costOf(const std::filesystem::path& folder, const std::vector<std::string>& options) {
    const auto program =
        std::filesystem::read_symlink("/proc/self/exe").parent_path() / "slatewise-offload";
    const auto user = folder / "user";
    std::vector<std::string> words = {program, "--quiet"};
    words.insert(words.end(), options.begin(), options.end());
    words.push_back(folder / "card");
    std::vector<char*> arguments;
    for (auto& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    // What is not printed yet would be printed by the child as well.
    std::fflush(stdout);
    int status = 0;
    rusage usage{};
    const auto seconds = wallSeconds([&] {
        const pid_t child = ::fork();
        if (child == 0) {
            for (const auto* variable :
                 {"XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CONFIG_HOME", "XDG_DOCUMENTS_DIR"})
                ::setenv(variable, (user / variable).c_str(), 1);
            std::freopen("/dev/null", "w", stdout);
            ::execv(program.c_str(), arguments.data());
            ::_exit(127);
        }
        ::wait4(child, &status, 0, &usage);
    });
    if (status != 0)
        throw std::runtime_error("the program failed");
    for (const auto* name : {"card", "disk", "user"})
        std::filesystem::remove_all(folder / name);
    return {seconds, static_cast<double>(usage.ru_maxrss) / 1e3};
}

/// Of files with holes, which are made at once.
double megabytesFor(const std::filesystem::path& folder, const Case& example) {
    std::filesystem::create_directories(folder / "disk");
    makeFiles(folder / "card", example.files, 1, example.filesPerFolder);
    for (const auto& file : std::filesystem::recursive_directory_iterator(folder / "card")) {
        if (file.is_regular_file())
            std::filesystem::resize_file(file, static_cast<std::uintmax_t>(example.fileBytes));
    }
    return costOf(folder, {"--to", folder / "disk"}).megabytes;
}

} // namespace

void benchLarge(const std::filesystem::path& folder) {
    measureCase(folder, {"4 files of 512 MiB", 4, 512 * kMebibyte, 4});
}

void benchSmall(const std::filesystem::path& folder) {
    measureCase(folder, {"5,000 files of 64 KiB", 5000, kMebibyte / 16, 100});
}

void benchMemory(const std::filesystem::path& folder) {
    fmt::print("Most memory held\n");
    const Case cases[] = {{"one file of 1 MiB", 1, kMebibyte, 1},
                          {"one file of 256 MiB", 1, 256 * kMebibyte, 1},
                          {"one file of 2 GiB", 1, 2048 * kMebibyte, 1},
                          {"5,000 files of 64 KiB", 5000, kMebibyte / 16, 100}};
    for (const auto& example : cases) {
        const double held = megabytesFor(folder, example);
        record("most memory held", example.name, "megabytes", held);
        fmt::print("  {:<22}{:>8.1f} MB\n", example.name, held);
    }
    fmt::print("\n");
}

void benchMillion(const std::filesystem::path& folder) {
    constexpr int kFiles = 1'000'000;
    fmt::print("Hashing {} files of one byte\n", kFiles);
    makeFiles(folder / "card", kFiles, 1, 1000);
    const auto cost = costOf(folder, {"--hash-only"});
    record("hashing a million files", "slatewise", "megabytes", cost.megabytes);
    record("hashing a million files", "slatewise", "seconds", cost.seconds);
    fmt::print("  {:>8.1f} s {:>10.1f} MB at most\n\n", cost.seconds, cost.megabytes);
}

} // namespace slatewise::bench
