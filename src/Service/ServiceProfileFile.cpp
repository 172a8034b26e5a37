#include "Service/ServiceProfileFile.h"

#include "Platform/Error.h"
#include "Platform/Files/FileDescriptor.h"
#include "Platform/Json.h"
#include "Storage/AppLog.h"

#include <QHostAddress>
#include <QUrl>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace slatewise {

namespace {

constexpr std::size_t kLargestProfileBytes = 64 * 1024;

/// The content of the file, empty when there is none. Fails with `Error` when nobody may trust it.
std::optional<std::string> readPrivately(const std::filesystem::path& path) {
    // A pipe in the file's place would hold up whoever opens it.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file && errno == ENOENT)
        return std::nullopt;
    if (!file)
        throw PosixError("open", path, errno);
    struct stat facts {};
    if (::fstat(file.get(), &facts) != 0)
        throw PosixError("stat", path, errno);
    if (!S_ISREG(facts.st_mode))
        throw Error("it is no file");
    if ((facts.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        throw Error("others can get at it; to mend that: chmod 600 \"" + path.native() + "\"");
    std::string content(kLargestProfileBytes + 1, '\0');
    const auto count = ::read(file.get(), content.data(), content.size());
    if (count < 0)
        throw PosixError("read", path, errno);
    content.resize(static_cast<std::size_t>(count));
    if (content.size() > kLargestProfileBytes)
        throw Error("it is too large");
    return content;
}

std::string textIn(const Json::Value& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string())
        throw Error(std::string("\"") + key + "\" is no text");
    return found->get<std::string>();
}

/// A token that travels in the open is no secret.
void requirePrivateAddress(const std::string& text) {
    const QUrl address(QString::fromStdString(text));
    const auto host = address.host();
    const bool isThisMachine = host == "localhost" || QHostAddress(host).isLoopback();
    if (address.scheme() == "http" && !isThisMachine)
        throw Error("its address begins with http, so that others on the way could read the "
                    "token; it has to begin with https");
}

/// No complaint repeats what the file holds: there is a token in it.
SaaSProfile profileFrom(const std::string& content) {
    const auto object = Json::Value::parse(content, nullptr, /*allow_exceptions=*/false);
    if (!object.is_object())
        throw Error("it is no JSON object");
    SaaSProfile profile{.accountID = textIn(object, "accountID"),
                        .saasAPIURL = textIn(object, "saasAPIURL"),
                        .presenceToken = textIn(object, "presenceToken")};
    requirePrivateAddress(profile.saasAPIURL);
    return profile;
}

} // namespace

ServiceProfileFile::ServiceProfileFile(const std::filesystem::path& folder)
    : file_(folder / fileName), current_(load()), watch_(file_, [this] { refresh(); }) {}

void ServiceProfileFile::refresh() {
    auto profile = load();
    if (profile == current_)
        return;
    current_ = std::move(profile);
    if (onChange)
        onChange();
}

std::optional<SaaSProfile> ServiceProfileFile::load() {
    std::string complaint;
    std::optional<SaaSProfile> profile;
    try {
        if (const auto content = readPrivately(file_))
            profile = profileFrom(*content);
    } catch (const Error& failure) {
        complaint = failure.localizedDescription();
    }
    if (!complaint.empty() && complaint != complaint_)
        AppLog::append(std::string(fileName) + " ignored: " + complaint);
    complaint_ = complaint;
    return profile;
}

} // namespace slatewise
