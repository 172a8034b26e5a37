#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

/// Other programs, run by tests.
namespace slatewise::test {

using Environment = std::map<std::string, std::string>;

struct ProcessResult {
    /// 128 and the signal's number when a signal ended it.
    int exitCode = -1;
    std::string standardOutput;
    std::string standardError;
};

/// A user whose data, state, settings and documents lie below this folder.
Environment userIn(const std::filesystem::path& folder);

/// This process is run by that user from now on.
void becomeUserIn(const std::filesystem::path& folder);

/// All that this user's log says.
std::string logOfUserIn(const std::filesystem::path& folder);

/// Runs a program, found along PATH, to its end. `extra` is added to the environment.
/// `whileRunning` is called once, on a thread of its own, with the process's id.
ProcessResult run(const std::vector<std::string>& words, const Environment& extra = {},
                  const std::function<void(pid_t)>& whileRunning = {});

/// As `run`, with the rights to mount: through sudo unless the tests have them anyway. Throws with
/// the program's own words when it fails.
std::string runPrivileged(std::vector<std::string> words);

} // namespace slatewise::test
