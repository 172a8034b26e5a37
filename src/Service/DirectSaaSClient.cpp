#include "Service/DirectSaaSClient.h"

#include "Platform/Error.h"
#include "Platform/Worker.h"
#include "Service/ServiceMessages.h"

namespace slatewise {

namespace {

constexpr int kFirstFailureStatus = 400;

std::string addressOf(std::string base, const std::string& path) {
    if (base.ends_with('/'))
        base.pop_back();
    return base + path;
}

QCoro::Task<std::string> post(std::string address, std::string path, std::string json,
                              HttpSession::Limits limits) {
    HttpSession::Answer answer;
    try {
        answer = co_await HttpSession::postJSON(std::move(address), std::move(json), limits);
    } catch (const Error& failure) {
        throw Error(path + ": " + failure.localizedDescription());
    }
    if (answer.status >= kFirstFailureStatus)
        throw Error(path + ": the service answered with status " + std::to_string(answer.status));
    co_return std::move(answer.body);
}

QCoro::Task<void> postAndForget(DirectSaaSClient client, std::string path, std::string json) {
    try {
        co_await client.postRaw(std::move(path), std::move(json));
    } catch (const std::exception&) {
        // A courtesy to the service; there is nobody to miss it here.
    }
}

QCoro::Task<void> flushWith(DirectSaaSClient client, std::shared_ptr<const OutboxPayload> payload) {
    const auto answer = co_await client.postRaw("/api/session/start",
                                                ServiceMessages::start(client.profile, *payload));
    const auto id = ServiceMessages::sessionIDIn(answer).value_or(payload->sessionID);

    const auto listing = onWorker([=] { return ServiceMessages::copiedFiles(id, *payload); });
    if (auto files = co_await listing)
        co_await client.postRaw("/api/session/log_file", std::move(*files));

    const auto parsing = onWorker([=] { return ServiceMessages::inventory(id, *payload); });
    if (auto inventory = co_await parsing)
        co_await client.postRaw("/api/dit/inventory", std::move(*inventory));

    const bool isVerified = payload->status == OutcomeStatus::Verified;
    if (isVerified)
        co_await client.postRaw("/api/session/complete", ServiceMessages::complete(id, *payload));
    else
        co_await client.postRaw("/api/session/fail", ServiceMessages::fail(id, *payload));
    co_await client.postRaw("/api/session/notify_event",
                            ServiceMessages::event(id, *payload, isVerified ? "end" : "error"));
}

} // namespace

QCoro::Task<std::string> DirectSaaSClient::postRaw(std::string path, std::string json) const {
    auto address = addressOf(profile.saasAPIURL, path);
    return post(std::move(address), std::move(path), std::move(json), limits);
}

QCoro::Task<void> DirectSaaSClient::presence() const {
    return postAndForget(*this, "/api/presence", ServiceMessages::presence(profile, hostname));
}

QCoro::Task<void> DirectSaaSClient::notifyDetected(const std::string& driveName) const {
    return postAndForget(*this, "/api/session/notify_event",
                         ServiceMessages::detected(profile, driveName));
}

QCoro::Task<void> DirectSaaSClient::flush(std::shared_ptr<const OutboxPayload> payload) const {
    return flushWith(*this, std::move(payload));
}

} // namespace slatewise
