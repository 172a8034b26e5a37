#pragma once

#include "Platform/Files/FileWatch.h"
#include "Service/ProfileRefusal.h"
#include "Service/SaaSProfile.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace slatewise {

/// The profile of the reporting service, which whoever administers the machine leaves as
/// "service-profile.json" in the application-support folder:
///
///     {"accountID": "…", "saasAPIURL": "https://…", "presenceToken": "…"}
///
/// Read when this is made and whenever the file appears, changes or goes. The profile is what the
/// file says at the moment: a file that is malformed counts as none, which is told, and so does one
/// that others than its owner can get at, or whose address is plain http to another machine, since
/// it holds a secret. GUI thread.
class ServiceProfileFile {
public:
    static constexpr auto* fileName = "service-profile.json";

    explicit ServiceProfileFile(const std::filesystem::path& folder);

    const std::optional<SaaSProfile>& current() const { return loaded_.profile; }

    /// Why a file that is there counts as none. The log has it too.
    const std::optional<ProfileRefusal>& refusal() const { return loaded_.refusal; }

    /// Called when one of the two has become another.
    std::function<void()> onChange;

private:
    /// What the file says at one moment; nothing when there is none.
    struct Loaded {
        std::optional<SaaSProfile> profile;
        std::optional<ProfileRefusal> refusal;

        friend bool operator==(const Loaded&, const Loaded&) = default;
    };

    void refresh();
    Loaded load() const;
    void take(Loaded found);

    std::filesystem::path file_;
    Loaded loaded_;
    FileWatch watch_;
};

} // namespace slatewise
