#include "Service/ServiceMessages.h"

#include "Platform/AppInfo.h"
#include "Platform/Error.h"
#include "Platform/Json.h"

#include <cctype>

namespace slatewise::ServiceMessages {

namespace {

using Json::Value;

Value text(std::string_view bytes) {
    return Text::displayable(bytes);
}

std::string entry(const OutboxFile& file, const std::string& driveName) {
    return Json::compactText({{"drive_name", text(driveName)},
                              {"source_path", text(file.sourcePath)},
                              {"target_path", text(file.targetPath)},
                              {"file_size", file.fileSize},
                              {"action", rawValue(file.action)}});
}

/// JSON on one line.
std::string onOneLine(std::string_view json) {
    std::string line;
    line.reserve(json.size());
    bool isInText = false;
    for (std::size_t at = 0; at < json.size(); ++at) {
        const char byte = json[at];
        isInText ^= byte == '"';
        if (isInText || !std::isspace(static_cast<unsigned char>(byte)))
            line += byte;
        if (isInText && byte == '\\' && at + 1 < json.size())
            line += json[++at];
    }
    return line;
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
    // As objects of the library, a million files would take many times their text.
    std::string entries;
    for (const auto& file : payload.files) {
        if (file.action == RowAction::Copy)
            entries += (entries.empty() ? "" : ",") + entry(file, payload.driveName);
    }
    if (entries.empty())
        return std::nullopt;
    return "{\"entries\":[" + std::move(entries) +
           "],\"session_id\":" + Json::compactText(text(sessionID)) + "}";
}

std::optional<std::string> inventory(const std::string& sessionID, const OutboxPayload& payload) {
    if (!Value::accept(payload.inventoryJSON))
        throw Error("the session's inventory is no JSON");
    auto line = onOneLine(payload.inventoryJSON);
    if (!line.starts_with('{'))
        return std::nullopt;
    return "{\"inventory\":" + std::move(line) +
           ",\"session_id\":" + Json::compactText(text(sessionID)) + "}";
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
