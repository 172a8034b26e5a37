#include "Language/SpokenError.h"

#include "Language/L10n.h"

namespace slatewise {

std::string SpokenError::localizedDescription() const {
    return text(L10n::current());
}

} // namespace slatewise
