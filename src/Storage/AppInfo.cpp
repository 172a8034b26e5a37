#include "Storage/AppInfo.h"

namespace slatewise::AppInfo {

const std::string_view websiteURL = SLATEWISE_WEBSITE_URL;

} // namespace slatewise::AppInfo
