#include "Model/AppModel.h"

namespace slatewise {

void AppModel::startCopy() {}

void AppModel::cancelCopy() {}

} // namespace slatewise
