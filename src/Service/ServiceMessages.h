#pragma once

#include "Service/OutboxPayload.h"
#include "Service/SaaSProfile.h"

#include <optional>
#include <string>
#include <string_view>

/// What the reporting service is told, as JSON texts, and what is read of its answer. Without
/// state; any thread. For a large session some are large: make them on a worker.
namespace slatewise::ServiceMessages {

std::string presence(const SaaSProfile& profile, std::string_view hostname);
std::string detected(const SaaSProfile& profile, std::string_view driveName);

std::string start(const SaaSProfile& profile, const OutboxPayload& payload);

/// The service's own id for the session that was started, if it has one. Fails with `Error`, which
/// repeats nothing of the answer, when the answer is none that we know.
std::optional<std::string> sessionIDIn(std::string_view answer);

/// All copied files. Empty when none was copied.
std::optional<std::string> copiedFiles(const std::string& sessionID, const OutboxPayload& payload);

/// Empty when the inventory is JSON but no object. Fails with `Error` when it is no JSON.
std::optional<std::string> inventory(const std::string& sessionID, const OutboxPayload& payload);

std::string complete(const std::string& sessionID, const OutboxPayload& payload);
std::string fail(const std::string& sessionID, const OutboxPayload& payload);

/// "end" or "error".
std::string event(const std::string& sessionID, const OutboxPayload& payload,
                  std::string_view event);

} // namespace slatewise::ServiceMessages
