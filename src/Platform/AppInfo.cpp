#include "Platform/AppInfo.h"

#include <QUrl>

namespace slatewise::AppInfo {

const std::string_view version = SLATEWISE_VERSION;
const std::string_view websiteURL = SLATEWISE_WEBSITE_URL;

std::string linkText(std::string_view url) {
    const QString host =
        QUrl(QString::fromUtf8(url.data(), static_cast<qsizetype>(url.size()))).host();
    return host.isEmpty() ? std::string(websiteLabel) : host.toStdString();
}

} // namespace slatewise::AppInfo
