#pragma once

#include "Platform/Disks/UDisksObjects.h"
#include "Platform/Error.h"

#include <chrono>
#include <optional>
#include <string>

namespace slatewise {

/// The disk service said no, or nothing in time. Described in its own words.
class UDisksError : public Error {
public:
    using Error::Error;
};

/// Asks the UDisks2 service. Any thread may; each call blocks, and has a limit.
class UDisksClient {
public:
    /// On the bus at that address; the system's when it is empty.
    explicit UDisksClient(std::string busAddress) : busAddress_(std::move(busAddress)) {}

    /// Nothing when the service is not there or does not answer within 2 seconds.
    std::optional<UDisksObjects> objects() const;

    /// Carries the plan out, step by step. Fails with `UDisksError` at the first step that does.
    /// Unmounting has minutes: what is not yet written must get to the disk.
    void eject(const EjectPlan& plan) const;

private:
    void call(const QString& object, const char* interface, const char* method,
              std::chrono::milliseconds limit) const;

    std::string busAddress_;
};

} // namespace slatewise
