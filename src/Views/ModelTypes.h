#pragma once

#include "Model/AppModel.h"

#include <qqml.h>

// The types by which views know the application, so that a misspelt name in a view is found before
// it runs. The model itself knows nothing of QML.

namespace slatewise {

#define SLATEWISE_MODEL_TYPE(type)                                                                 \
    struct type##Type {                                                                            \
        Q_GADGET                                                                                   \
        QML_FOREIGN(slatewise::type)                                                               \
        QML_NAMED_ELEMENT(type)                                                                    \
        QML_UNCREATABLE("The program makes it.")                                                   \
    }

SLATEWISE_MODEL_TYPE(AppModel);
SLATEWISE_MODEL_TYPE(BatchControl);
SLATEWISE_MODEL_TYPE(ChoiceListModel);
SLATEWISE_MODEL_TYPE(OtherVolumes);
SLATEWISE_MODEL_TYPE(OutcomeListModel);
SLATEWISE_MODEL_TYPE(PathTemplate);
SLATEWISE_MODEL_TYPE(CopyCheck);
SLATEWISE_MODEL_TYPE(ReportsFolder);
SLATEWISE_MODEL_TYPE(SessionHistory);
SLATEWISE_MODEL_TYPE(SettingsForm);
SLATEWISE_MODEL_TYPE(UnitPicker);
SLATEWISE_MODEL_TYPE(VolumeListModel);

#undef SLATEWISE_MODEL_TYPE

} // namespace slatewise
