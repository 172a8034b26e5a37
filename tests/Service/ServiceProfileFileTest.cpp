#include "Service/ServiceProfileFile.h"

#include "Platform/Text.h"
#include "support/Desk.h"
#include "support/Process.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

using namespace slatewise;
using namespace slatewise::test;
using namespace ::testing;

namespace {

constexpr auto* kToken = "s3cret-token";

std::string profileText(const std::string& account) {
    return R"({"accountID":")" + account + R"(","saasAPIURL":"https://reports.example","more":1,)" +
           R"("presenceToken":")" + kToken + "\"}";
}

/// With blanks behind it, up to that size.
std::string padded(const std::string& text, std::size_t size) {
    return text + std::string(size - text.size(), ' ');
}

class ServiceProfile : public ::testing::Test {
protected:
    ServiceProfile() { becomeUserIn(folder.path()); }

    void put(const std::filesystem::path& path, const std::string& content, mode_t mode = 0600) {
        writeFile(path, content);
        ::chmod(path.c_str(), mode);
    }

    /// Waits until the account is that, "none" for no profile.
    static void expectAccount(const ServiceProfileFile& profile, const std::string& account) {
        Desk::waitUntil(
            [&] { return (profile.current() ? profile.current()->accountID : "none") == account; });
    }

    std::string log() const { return logOfUserIn(folder.path()); }

    TemporaryFolder folder;
    std::filesystem::path file = folder / "support/service-profile.json";
};

} // namespace

TEST_F(ServiceProfile, FollowsTheFileHoweverItChanges) {
    put(file, profileText("first"));
    ServiceProfileFile profile(file.parent_path());
    EXPECT_EQ(profile.current(), (SaaSProfile{"first", "https://reports.example", "s3cret-token"}));
    int changes = 0;
    profile.onChange = [&] {
        ++changes;
    };

    put(file, profileText("in place"));
    expectAccount(profile, "in place");
    for (const auto* account : {"renamed over it", "and again"}) {
        put(folder / "support/new", profileText(account));
        std::filesystem::rename(folder / "support/new", file);
        expectAccount(profile, account);
    }
    put(file, profileText("in place once more"));
    expectAccount(profile, "in place once more");
    std::filesystem::remove(file);
    expectAccount(profile, "none");
    put(file, profileText("back"));
    expectAccount(profile, "back");
    EXPECT_EQ(changes, 6) << "once for each";
    EXPECT_EQ(log(), "");
}

TEST_F(ServiceProfile, WhatIsMalformedCountsAsNoneAndIsNamedOnce) {
    put(file, profileText("good"));
    ServiceProfileFile profile(file.parent_path());
    const std::string token = std::string("\"presenceToken\":\"") + kToken + "\"";
    const std::pair<std::string, const char*> cases[] = {
        {"{" + token, "not a JSON object"},
        {"[\"" + std::string(kToken) + "\"]", "not a JSON object"},
        {"", "not a JSON object"},
        {"{" + token + R"(,"saasAPIURL":"x"})", "\"accountID\" is not text"},
        {"{" + token + R"(,"saasAPIURL":"x","accountID":7})", "\"accountID\" is not text"},
        {R"({"saasAPIURL":"x","accountID":"a"})", "\"presenceToken\" is not text"},
        {Text::replaced(profileText("open"), "https:", "HTTP:"), "s address begins with http,"},
        {padded(profileText("large"), 65'537), "too large"},
    };
    for (const auto& [content, complaint] : cases) {
        put(file, content);
        expectAccount(profile, "none");
        EXPECT_THAT(log(), HasSubstr(std::string("service-profile.json is ignored: ") +
                                     (complaint[0] == '"'   ? ""
                                      : complaint[0] == 's' ? "it"
                                                            : "it is ") +
                                     complaint));
        put(file, padded(profileText("good"), 65'536));
        expectAccount(profile, "good");
    }
    EXPECT_THAT(log(), Not(HasSubstr(kToken)));
}

TEST_F(ServiceProfile, WhatOthersCanGetAtIsRefusedUntilMended) {
    for (const mode_t mode : {0640U, 0604U, 0644U, 0620U, 0602U}) {
        put(file, profileText("open"), mode);
        ServiceProfileFile profile(file.parent_path());
        EXPECT_FALSE(profile.current()) << mode;
        EXPECT_THAT(profile.refusal().value().text(L10n(AppLanguage::Turkish)),
                    HasSubstr("kullanılmıyor: başkaları erişebiliyor"));
        EXPECT_THAT(log(), HasSubstr("chmod 600 \"" + file.native() + "\""));
        ::chmod(file.c_str(), 0600);
        expectAccount(profile, "open");
        EXPECT_FALSE(profile.refusal());
    }
    EXPECT_THAT(log(), Not(HasSubstr(kToken)));

    std::filesystem::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    EXPECT_FALSE(ServiceProfileFile(file.parent_path()).current()) << "and nobody waits for it";
}
