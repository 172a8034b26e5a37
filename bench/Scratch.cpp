#include "Scratch.h"

#include "Platform/Files/FileSystem.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <random>
#include <stdexcept>

namespace slatewise::bench {

namespace {

double cpuSecondsSoFar() {
    double sum = 0;
    for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        ::getrusage(who, &usage);
        for (const auto& time : {usage.ru_utime, usage.ru_stime})
            sum += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    }
    return sum;
}

nlohmann::json& figures() {
    static auto all = nlohmann::json::array();
    return all;
}

} // namespace

void makeFiles(const std::filesystem::path& root, int count, std::int64_t sizeBytes,
               int perFolder) {
    std::mt19937_64 numbers(1);
    std::string block(static_cast<std::size_t>(std::min<std::int64_t>(sizeBytes, 1 << 20)), '\0');
    for (int file = 0; file < count; ++file) {
        const auto folder = root / fmt::format("{:05}", file / perFolder);
        std::filesystem::create_directories(folder);
        const auto path = folder / fmt::format("{:05}.bin", file);
        const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        for (std::int64_t written = 0; written < sizeBytes;) {
            for (std::size_t at = 0; at + 8 <= block.size(); at += 8) {
                const auto number = numbers();
                block.replace(at, 8, reinterpret_cast<const char*>(&number), 8);
            }
            const auto wrote = ::write(descriptor, block.data(), block.size());
            if (wrote < 1)
                throw std::runtime_error("no room for files to measure with");
            written += wrote;
        }
        ::close(descriptor);
    }
}

void dropCaches(const std::vector<std::filesystem::path>& folders) {
    ::sync();
    if (::geteuid() == 0) {
        FileSystem::append("/proc/sys/vm/drop_caches", "3\n");
        return;
    }
    for (const auto& folder : folders) {
        if (!std::filesystem::exists(folder))
            continue;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            const int descriptor = ::open(entry.path().c_str(), O_RDONLY);
            (void)::posix_fadvise(descriptor, 0, 0, POSIX_FADV_DONTNEED);
            ::close(descriptor);
        }
    }
}

void shell(const std::string& command) {
    if (std::system(command.c_str()) != 0)
        throw std::runtime_error("failed: " + command);
}

std::string shellQuoted(const std::filesystem::path& path) {
    std::string text = "'";
    for (const char character : path.native())
        text += character == '\'' ? std::string("'\\''") : std::string(1, character);
    return text + "'";
}

double wallSeconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double cpuSeconds(const std::function<void()>& work) {
    const double before = cpuSecondsSoFar();
    work();
    return cpuSecondsSoFar() - before;
}

void record(const std::string& measured, const std::string& way, const std::string& unit,
            double value) {
    for (auto& entry : figures()) {
        if (entry["measured"] == measured && entry["way"] == way) {
            entry[unit] = value;
            return;
        }
    }
    figures().push_back({{"measured", measured}, {"way", way}, {unit, value}});
}

std::string recordedJSON() {
    return figures().dump(2);
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace slatewise::bench
