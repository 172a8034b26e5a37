#pragma once

#include "support/Files.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace slatewise::test {

/// A program that runs beside the test and ends with it, also when the test is killed. To be made
/// on a thread that lives as long.
class Daemon {
public:
    enum class Owner { ThisUser, Root };

    Daemon(std::vector<std::string> words, Owner owner);
    ~Daemon();
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    /// "STOP" holds it, "CONT" lets it go on.
    void send(const std::string& signal) const;

    /// The first line that it says, waited for.
    std::string firstLine() const;

private:
    TemporaryFolder folder_;
    Owner owner_;
    /// What we have started, which may be a program that raises rights.
    pid_t child_ = 0;
};

} // namespace slatewise::test
