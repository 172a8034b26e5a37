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
    /// `name` is the error's own, as the service has it:
    /// "org.freedesktop.UDisks2.Error.DeviceBusy".
    UDisksError(const std::string& description, std::string name)
        : Error(description), name_(std::move(name)) {}

    const std::string& name() const noexcept { return name_; }

private:
    std::string name_;
};

/// Asks the UDisks2 service. Any thread may; each call blocks, and has a limit.
class UDisksClient {
public:
    /// On the bus at that address; the system's when it is empty.
    explicit UDisksClient(std::string busAddress) : busAddress_(std::move(busAddress)) {}

    /// Nothing when the service is not there or does not answer within 2 seconds.
    std::optional<UDisksObjects> objects() const;

    /// The first step of a plan, after which the disk has all that was written. Has minutes for
    /// that. Fails with `UDisksError`; the volume is mounted as before then.
    void unmount(const EjectPlan& plan) const;

    /// The steps after it: locks what was encrypted, then does what the plan says of the drive.
    /// Fails with `UDisksError` at the first that does.
    void release(const EjectPlan& plan) const;

private:
    void call(const QString& object, const char* interface, const char* method,
              std::chrono::milliseconds limit) const;

    std::string busAddress_;
};

} // namespace slatewise
