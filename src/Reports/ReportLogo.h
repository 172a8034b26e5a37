#pragma once

#include "Pdf/PdfCanvas.h"

/// The program's mark, as reports show it.
namespace slatewise::ReportLogo {

/// Null when the program was built without it. Read once; any thread may ask.
const PdfImage* image();

} // namespace slatewise::ReportLogo
