#pragma once

#include "support/Daemon.h"

#include <optional>
#include <string>

namespace slatewise::test {

/// A message bus of the test's own, gone at the end of its life.
class PrivateBus {
public:
    PrivateBus();

    const std::string& address() const { return address_; }

private:
    TemporaryFolder folder_;
    std::optional<Daemon> daemon_;
    std::string address_;
};

} // namespace slatewise::test
