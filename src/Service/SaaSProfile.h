#pragma once

#include <string>

namespace slatewise {

/// How to reach the reporting service. The token goes to the service and nowhere else: into no log,
/// no error text and no database.
struct SaaSProfile {
    /// Names the account in every request.
    std::string accountID;
    /// Base of every address, with or without a "/" at its end.
    std::string saasAPIURL;
    std::string presenceToken;

    /// Without an account or an address nothing is ever sent.
    bool canBeReached() const { return !accountID.empty() && !saasAPIURL.empty(); }

    friend bool operator==(const SaaSProfile&, const SaaSProfile&) = default;
};

} // namespace slatewise
