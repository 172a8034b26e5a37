#include "Model/StoredList.h"

#include "Platform/Desktop/UserDefaults.h"
#include "Platform/Json.h"

namespace slatewise::StoredList {

std::vector<std::string> load(const UserDefaults& defaults, std::string_view key) {
    const auto stored = defaults.value(key);
    if (!stored)
        return {};
    try {
        return Json::Value::parse(*stored).get<std::vector<std::string>>();
    } catch (const Json::Value::exception&) {
        return {};
    }
}

void save(UserDefaults& defaults, std::string_view key, const std::vector<std::string>& texts) {
    defaults.setValue(key, Json::compactText(Json::toJson(texts)));
}

} // namespace slatewise::StoredList
