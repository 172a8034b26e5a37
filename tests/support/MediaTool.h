#pragma once

#include "Offload/MediaInfoCLI/MediaInfoCLI.h"
#include "support/Files.h"

#include <string>

namespace slatewise::test {

/// A script in place of the `mediainfo` tool, with limits that suit a test.
class FakeMediaInfo {
public:
    /// What a shell does for every file; the file is its fourth argument.
    void says(const std::string& script) {
        writeFile(path(), "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(path(), std::filesystem::perms::owner_all);
    }

    std::filesystem::path path() const { return folder_ / "tool/mediainfo"; }

    MediaInfoCLI::Tool tool() {
        using std::chrono::milliseconds;
        using std::chrono::seconds;
        return {.candidates = {path()},
                .limits = {.run = seconds(3), .grace = milliseconds(200)},
                .noted = &noted_};
    }

private:
    TemporaryFolder folder_;
    MediaInfoCLI::Noted noted_;
};

} // namespace slatewise::test
