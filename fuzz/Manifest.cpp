#include "Platform/Error.h"
#include "Reports/ReportWriter.h"
#include "Require.h"

using namespace slatewise;

/// Whatever stands in a manifest is read as one or refused, and what was read can be written and
/// read again.
extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    try {
        const auto manifest = ReportWriter::isoDecode({data, size});
        fuzz::require(ReportWriter::isoDecode(ReportWriter::isoEncode(manifest)) == manifest);
    } catch (const Error&) {
        // Refused, as it should be told.
    }
    return 0;
}
