#include "Model/AppModel.h"

#include "Model/QtText.h"
#include "Service/DirectSaaSClient.h"

// The reporting service: what it is told, and what the user is told of it.

namespace slatewise {

void AppModel::serviceProfileChanged() {
    updateSaasLine();
    drainer_.drain(serviceProfile_.current());
}

void AppModel::updateSaasLine() {
    const auto& profile = serviceProfile_.current();
    auto line = toQString(profile ? l10n().connected(profile->accountID, profile->saasAPIURL)
                                  : l10n().standalone());
    if (line == saasLine_)
        return;
    saasLine_ = std::move(line);
    Q_EMIT saasLineChanged();
}

void AppModel::notifyService(const ClassifiedVolume& newCard) const {
    if (const auto& profile = serviceProfile_.current())
        DirectSaaSClient{.profile = *profile, .limits = {}}.notifyDetected(newCard.name());
}

} // namespace slatewise
