#pragma once

#include "Batch/BatchPlan.h"

#include <memory>
#include <vector>

namespace slatewise::ReportArchive {

using Disks = std::vector<std::shared_ptr<const RootFolder>>;

/// Takes hold of the folder that a batch's reports are archived in. The default one is made where
/// it is missing. One that the user chose was there then: if it is not now, or is a bare mount
/// point, its disk is not there, and what is written in its place would lie beneath. No link leads
/// from one of the batch's disks to an archive elsewhere. Tidies up what killed programs left there
/// and among the reports of the disks. Fails with `Error`, in the plan's language. Blocks; any
/// thread.
std::shared_ptr<const RootFolder> open(const BatchPlan& plan, const Disks& disks);

} // namespace slatewise::ReportArchive
