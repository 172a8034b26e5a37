#pragma once

#include "Platform/Text.h"
#include "support/Files.h"
#include "support/Process.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace slatewise::test {

/// The program with two cards, two disks and a user of its own.
class OffloadProgram : public ::testing::Test {
protected:
    /// What the program says of a card and a disk.
    struct Line {
        std::string status;
        std::filesystem::path sessionRoot;
        std::filesystem::path reportFolder;
    };

    struct Offloaded : ProcessResult {
        std::vector<Line> pairs;
    };

    OffloadProgram() {
        for (const auto* name : {"A001", "B002", "Disk1", "Disk2"})
            std::filesystem::create_directory(folder / name);
        writeFile(folder / "A001/DCIM/clip 1.dat", bytesOf(3'000'001));
        writeFile(folder / "A001/.DS_Store", "junk");
        writeFile(folder / "A001/bad \xff name", "x");
        // The one clip by its name: each has programs started that look for its facts.
        writeFile(folder / "B002/new\nline.wav", "y");
        writeFile(folder / "B002/MISC/notes.txt", "z");
    }

    /// Runs it to its end, which is to be this one, if any.
    Offloaded offload(std::vector<std::string> words, std::optional<int> exitCode = 0,
                      const std::function<void(pid_t)>& whileRunning = {}) const {
        words.insert(words.begin(), program.native());
        Offloaded result{run(words, environment, whileRunning), {}};
        if (exitCode) {
            EXPECT_EQ(result.exitCode, *exitCode)
                << ::testing::PrintToString(words) << result.standardError;
        }
        for (const auto text : Text::pieces(result.standardOutput, '\n')) {
            const auto first = text.find('\t');
            const auto second = text.find('\t', first + 1);
            result.pairs.push_back({std::string(text.substr(0, first)),
                                    text.substr(first + 1, second - first - 1),
                                    text.substr(second + 1)});
        }
        return result;
    }

    /// A clip of the card A001 that is copied for longer than any test takes.
    void addLongClip(const std::string& name) const {
        writeFile(folder / "A001/DCIM" / name, "");
        std::filesystem::resize_file(folder / "A001/DCIM" / name, kLongClip);
    }

    static std::vector<std::string> entriesOf(const std::filesystem::path& where) {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(where))
            names.push_back(entry.path().filename());
        return names;
    }

    /// Whether sha256sum and cmp agree with a line that says "verified".
    static void expectProved(const Line& line, const std::filesystem::path& card) {
        EXPECT_EQ(line.status, "verified");
        const auto check = run({"sh", "-c", "cd \"$0\" && sha256sum --strict --quiet -c \"$1\"",
                                line.sessionRoot, line.reportFolder / "checksums.sha256"});
        EXPECT_EQ(check.exitCode, 0) << check.standardOutput << check.standardError;
        const auto compare = run({"diff", "-r", "--exclude=.DS_Store", card, line.sessionRoot});
        EXPECT_EQ(compare.exitCode, 0) << compare.standardOutput;
    }

    std::filesystem::path store() const { return folder / "user/data/Slatewise DIT/dit.sqlite"; }

    static constexpr std::uintmax_t kLongClip = 20'000'000'000;

    TemporaryFolder folder;
    Environment environment = userIn(folder / "user");
    const std::filesystem::path program = programsFolder() / "slatewise-offload";
};

} // namespace slatewise::test
