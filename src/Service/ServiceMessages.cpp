#include "Service/ServiceMessages.h"

#include "Platform/AppInfo.h"
#include "Platform/Error.h"
#include "Platform/Json.h"

namespace slatewise::ServiceMessages {

namespace {

using Json::Value;

Value text(std::string_view bytes) {
    return Text::displayable(bytes);
}

Value entry(const OutboxFile& file, const std::string& driveName) {
    return {{"drive_name", text(driveName)},
            {"source_path", text(file.sourcePath)},
            {"target_path", text(file.targetPath)},
            {"file_size", file.fileSize},
            {"action", rawValue(file.action)}};
}

} // namespace

std::string presence(const SaaSProfile& profile, std::string_view hostname) {
    return Json::compactText({{"account_id", text(profile.accountID)},
                              {"token", text(profile.presenceToken)},
                              {"role", "source"},
                              {"hostname", text(hostname)},
                              {"app_version", AppInfo::version}});
}

std::string detected(const SaaSProfile& profile, std::string_view driveName) {
    return Json::compactText({{"account_id", text(profile.accountID)},
                              {"event", "detected"},
                              {"drive_name", text(driveName)}});
}

std::string start(const SaaSProfile& profile, const OutboxPayload& payload) {
    return Json::compactText({{"account_id", text(profile.accountID)},
                              {"drive_name", text(payload.driveName)},
                              {"mount_time", Clock::iso8601(payload.startedAt)},
                              {"total_size_bytes", payload.totalSizeBytes},
                              {"transfer_protocol", "dit"}});
}

std::optional<std::string> sessionIDIn(std::string_view answer) {
    try {
        const auto object = Value::parse(answer);
        if (!object.is_object())
            throw Error("the answer is no object");
        std::optional<std::string> sessionID;
        Json::getIfPresent(object, "session_id", sessionID);
        return sessionID;
    } catch (const Value::exception&) {
        throw Error("the answer is not what a session's start is answered with");
    }
}

std::optional<std::string> copiedFiles(const std::string& sessionID, const OutboxPayload& payload) {
    Value entries = Value::array();
    for (const auto& file : payload.files) {
        if (file.action == RowAction::Copy)
            entries.push_back(entry(file, payload.driveName));
    }
    if (entries.empty())
        return std::nullopt;
    Value object = {{"session_id", text(sessionID)}};
    object["entries"] = std::move(entries);
    return Json::compactText(object);
}

std::optional<std::string> inventory(const std::string& sessionID, const OutboxPayload& payload) {
    auto parsed = Value::parse(payload.inventoryJSON, nullptr, /*allow_exceptions=*/false);
    if (parsed.is_discarded())
        throw Error("the session's inventory is no JSON");
    if (!parsed.is_object())
        return std::nullopt;
    Value object = {{"session_id", text(sessionID)}};
    object["inventory"] = std::move(parsed);
    return Json::compactText(object);
}

std::string complete(const std::string& sessionID, const OutboxPayload& payload) {
    const auto end = Clock::iso8601(payload.finishedAt);
    return Json::compactText({{"session_id", text(sessionID)},
                              {"total_size_bytes", payload.totalSizeBytes},
                              {"start_time", Clock::iso8601(payload.startedAt)},
                              {"end_time", end},
                              {"eject_time", end},
                              {"average_speed_mbs", payload.averageSpeedMBs}});
}

std::string fail(const std::string& sessionID, const OutboxPayload& payload) {
    return Json::compactText({{"session_id", text(sessionID)},
                              {"error", text(payload.error.value_or("DIT offload failed"))}});
}

std::string event(const std::string& sessionID, const OutboxPayload& payload,
                  std::string_view event) {
    return Json::compactText({{"session_id", text(sessionID)},
                              {"event", event},
                              {"drive_name", text(payload.driveName)}});
}

} // namespace slatewise::ServiceMessages
