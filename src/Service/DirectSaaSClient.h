#pragma once

#include "Platform/HttpSession.h"
#include "Service/OutboxPayload.h"
#include "Service/SaaSProfile.h"

#include <QCoro/QCoroTask>

#include <memory>
#include <string>

namespace slatewise {

/// Tells the reporting service what happens here. All traffic goes one way: of all answers one
/// field of one is read. A value, made anew for each use; its operations are called on the GUI
/// thread and leave whatever is heavy to a worker. They do not need the client to live on.
///
/// Nothing is tried twice. A failure is an `Error` that says which request it was; neither token
/// nor base address is ever in it.
struct DirectSaaSClient {
    SaaSProfile profile;
    HttpSession::Limits limits;
    std::string hostname = HttpSession::hostName();

    /// Sends `json` to a path below the profile's address and gives the answer's body. A status of
    /// 400 or more is a failure; any below is success, a redirection included, which is not
    /// followed: a report must not wander to a host that nobody named.
    QCoro::Task<std::string> postRaw(std::string path, std::string json) const;

    /// Says that this machine is there. A failure is dropped.
    QCoro::Task<void> presence() const;

    /// Says that a card was inserted. A failure is dropped.
    QCoro::Task<void> notifyDetected(const std::string& driveName) const;

    /// Reports one session, one request after the other; the first that fails ends it.
    QCoro::Task<void> flush(std::shared_ptr<const OutboxPayload> payload) const;
};

} // namespace slatewise
