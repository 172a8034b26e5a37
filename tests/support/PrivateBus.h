#pragma once

#include "support/Files.h"

#include <string>
#include <sys/types.h>

namespace slatewise::test {

/// A message bus of the test's own, gone at the end of its life.
class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    const std::string& address() const { return address_; }

private:
    TemporaryFolder folder_;
    std::string address_;
    pid_t daemon_ = 0;
};

} // namespace slatewise::test
