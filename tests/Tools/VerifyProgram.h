#pragma once

#include "MediaHashList/History.h"
#include "Platform/Text.h"
#include "support/Files.h"
#include "support/Process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace slatewise::test {

/// A verified session of a card with odd names, and the program that checks it again.
class VerifyProgram : public ::testing::Test {
protected:
    using Generation = MediaHashList::Generation;
    using History = MediaHashList::History;

    VerifyProgram() {
        writeFile(folder / "A001/CLIP/a.dat", bytesOf(2'000'001));
        writeFile(folder / "A001/CLIP/Şarkı ğ.snd", "ses");
        writeFile(folder / "A001/line\nend", "odd");
        writeFile(folder / "A001/bad \xff", "bytes");
        std::filesystem::create_directory(folder / "Disk");
    }

    ProcessResult program(const std::string& name, std::vector<std::string> words) {
        words.insert(words.begin(), (programsFolder() / name).native());
        return run(words, userIn(folder / "user"));
    }

    /// A fresh session; gives its folder, and notes that of its reports and what was told.
    std::filesystem::path offload(const std::string& option = "--quiet", int exitCode = 0) {
        const auto result = program("slatewise-offload",
                                    {option, "--quiet", "--to", folder / "Disk", folder / "A001"});
        EXPECT_EQ(result.exitCode, exitCode) << result.standardError;
        told = result.standardError;
        // Where nothing was copied, the field between the two is empty.
        const auto& line = result.standardOutput;
        const auto first = line.find('\t');
        const auto last = line.rfind('\t');
        reports = std::filesystem::path(Text::trimmed(line.substr(last + 1)));
        copy = std::filesystem::path(line.substr(first + 1, last - first - 1));
        return copy;
    }

    /// As `offload`, with the same options each time: the first session, with the disk and all that
    /// the user has as they were after it, whatever became of them since.
    std::filesystem::path offloadedAnew(const std::string& option = "--quiet") {
        const auto kept = folder / "kept";
        auto from = kept;
        auto to = folder.path();
        if (std::filesystem::create_directory(kept)) {
            (void)offload(option);
            std::swap(from, to);
        }
        for (const auto* const name : {"Disk", "user"}) {
            std::filesystem::remove_all(to / name);
            const auto copying = run({"cp", "-a", from / name, to});
            EXPECT_EQ(copying.exitCode, 0) << copying.standardError;
        }
        return copy;
    }

    /// Checks a tree, of which this is to be told first; nothing, where it is empty.
    void expectToldFirst(const std::string& what, const std::filesystem::path& root) {
        const auto result = program("slatewise-verify", {"--quiet", root});
        EXPECT_EQ(result.exitCode, what.empty() ? 0 : 1) << result.standardError;
        EXPECT_THAT(result.standardOutput, ::testing::StartsWith(what));
    }

    TemporaryFolder folder;
    std::filesystem::path reports;
    std::filesystem::path copy;
    std::string told;
};

} // namespace slatewise::test
