#include "Service/ServiceProfileFile.h"

#include "Platform/Error.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Json.h"
#include "Storage/AppLog.h"

#include <QHostAddress>
#include <QUrl>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace slatewise {

namespace {

constexpr std::size_t kLargestProfileBytes = std::size_t{64} * 1024;

using Kind = ProfileRefusal::Kind;

/// Carries a refusal to whoever loads.
class RefusedProfile : public Error {
public:
    explicit RefusedProfile(Kind kind, std::string subject = {}, int code = 0)
        : Error("profile refused"), why{kind, std::move(subject), code} {}

    const ProfileRefusal why;
};

/// The content of the file, empty when there is none. Fails with `RefusedProfile` when nobody may
/// trust it.
std::optional<std::string> readPrivately(const std::filesystem::path& path) {
    // A pipe in the file's place would hold up whoever opens it.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file && errno == ENOENT)
        return std::nullopt;
    struct stat facts {};
    if (!file || ::fstat(file.get(), &facts) != 0)
        throw RefusedProfile(Kind::NotRead, path.native(), errno);
    if (!S_ISREG(facts.st_mode))
        throw RefusedProfile(Kind::IsNoFile, path.native());
    if ((facts.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        throw RefusedProfile(Kind::OpenToOthers, path.native());
    std::string content(kLargestProfileBytes + 1, '\0');
    const auto count = ::read(file.get(), content.data(), content.size());
    if (count < 0)
        throw RefusedProfile(Kind::NotRead, path.native(), errno);
    content.resize(static_cast<std::size_t>(count));
    if (content.size() > kLargestProfileBytes)
        throw RefusedProfile(Kind::TooLarge, path.native());
    return content;
}

std::string textIn(const Json::Value& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string())
        throw RefusedProfile(Kind::LacksText, key);
    return found->get<std::string>();
}

/// A token that travels in the open is no secret.
bool isOpen(const std::string& text) {
    const QUrl address(QString::fromStdString(text));
    const auto host = address.host();
    const bool isThisMachine = host == "localhost" || QHostAddress(host).isLoopback();
    return address.scheme() == "http" && !isThisMachine;
}

SaaSProfile profileFrom(const std::string& content) {
    const auto object = Json::Value::parse(content, nullptr, /*allow_exceptions=*/false);
    if (!object.is_object())
        throw RefusedProfile(Kind::IsNoObject);
    SaaSProfile profile{.accountID = textIn(object, "accountID"),
                        .saasAPIURL = textIn(object, "saasAPIURL"),
                        .presenceToken = textIn(object, "presenceToken")};
    if (isOpen(profile.saasAPIURL))
        throw RefusedProfile(Kind::OpenAddress);
    return profile;
}

} // namespace

ServiceProfileFile::ServiceProfileFile(const std::filesystem::path& folder)
    : file_(folder / fileName), watch_(file_, [this] { refresh(); }) {
    take(load());
}

void ServiceProfileFile::refresh() {
    auto found = load();
    if (found == loaded_)
        return;
    take(std::move(found));
    if (onChange)
        onChange();
}

void ServiceProfileFile::take(Loaded found) {
    if (found.refusal && found.refusal != loaded_.refusal)
        AppLog::append(found.refusal->text(L10n(AppLanguage::English)));
    loaded_ = std::move(found);
}

ServiceProfileFile::Loaded ServiceProfileFile::load() const {
    try {
        if (const auto content = readPrivately(file_))
            return {profileFrom(*content), std::nullopt};
    } catch (const RefusedProfile& refused) {
        return {std::nullopt, refused.why};
    }
    return {};
}

} // namespace slatewise
