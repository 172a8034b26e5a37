#include "Texts.h"

#include <fmt/format.h>

namespace slatewise::tool {

std::string Texts::timeLeft(std::string_view time) const {
    return shared.isTurkish() ? fmt::format("{} kaldı", time) : fmt::format("{} left", time);
}

std::string Texts::leftOnDestination(std::string_view sessionRoot) const {
    return shared.isTurkish()
               ? fmt::format("O ana kadar kopyalananlar duruyor, ama doğrulanmadı: {}", sessionRoot)
               : fmt::format("What was copied until then stays, but is not verified: {}",
                             sessionRoot);
}

std::string Texts::reportsNotWritten(std::string_view reason) const {
    return shared.isTurkish() ? fmt::format("Kopya bitti, ama: {}", reason)
                              : fmt::format("The copy is complete, but: {}", reason);
}

std::string_view Texts::reportsStillWait() const {
    return shared.isTurkish()
               ? "Servis yanıt vermedi; bildirimler bekliyor ve bir sonraki açılışta gönderilecek."
               : "The service did not answer; its reports wait and are sent at the next start.";
}

} // namespace slatewise::tool
