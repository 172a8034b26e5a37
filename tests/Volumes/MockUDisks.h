#pragma once

#include "Platform/Disks/UDisksObjects.h"
#include "support/PrivateBus.h"

#include <QDBusVirtualObject>
#include <QThread>

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace slatewise::test {

/// Speaks as UDisks2 does, on a bus of its own and on a thread of its own, about disks that do not
/// exist.
class MockUDisks {
public:
    explicit MockUDisks(UDisksObjects::Objects objects);
    ~MockUDisks();
    MockUDisks(const MockUDisks&) = delete;
    MockUDisks& operator=(const MockUDisks&) = delete;

    const std::string& address() const { return bus_.address(); }

    /// Answers the method with an error of the service from now on: "DeviceBusy".
    void refuse(const std::string& method, const std::string& error);

    /// Takes every question from now on and answers none.
    void fallSilent() { isSilent_ = true; }

    /// What it was asked to do, in order: "Unmount block_devices/sdb1".
    std::vector<std::string> deeds() const;

    int timesAskedForObjects() const { return timesAskedForObjects_; }

private:
    class Speaker;

    QDBusMessage answerTo(const QDBusMessage& question);

    PrivateBus bus_;
    UDisksObjects::Objects objects_;
    std::atomic<bool> isSilent_ = false;
    std::atomic<int> timesAskedForObjects_ = 0;
    mutable std::mutex lock_;
    std::vector<std::string> deeds_;
    std::string refusedMethod_;
    std::string refusal_;
    QThread thread_;
    std::unique_ptr<Speaker> speaker_;
};

} // namespace slatewise::test
