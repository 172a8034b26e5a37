#include "Batch/ReportArchive.h"

#include "Language/L10n.h"
#include "Platform/Error.h"
#include "Storage/SupportPaths.h"

#include <cerrno>

namespace slatewise::ReportArchive {

namespace {

/// Empty when the path does not lie below the folder by its words.
std::filesystem::path below(const std::filesystem::path& folder,
                            const std::filesystem::path& path) {
    const auto relative = path.lexically_normal().lexically_relative(folder.lexically_normal());
    return relative.empty() || *relative.begin() == ".." ? std::filesystem::path() : relative;
}

void requireNoWayOut(const std::filesystem::path& archive, const BatchPlan& plan) {
    for (const auto& disk : plan.destinations) {
        const auto& mountPoint = disk.facts.mountPoint;
        const auto onDisk = below(mountPoint, archive);
        if (onDisk.empty())
            continue;
        const RootFolder root(mountPoint);
        root.createFolders(onDisk);
        if (!root.below(onDisk).isSame(RootFolder(archive)))
            throw PosixError("open", archive, EXDEV);
    }
}

} // namespace

std::shared_ptr<const RootFolder> open(const BatchPlan& plan) {
    const auto path = SupportPaths::reportsArchive(plan.settings);
    try {
        requireNoWayOut(path, plan);
        return std::make_shared<const RootFolder>(path);
    } catch (const PosixError& failure) {
        throw Error(OffloadProblem::of(OffloadProblem::Kind::ReportsNotArchived, path.native(),
                                       failure, plan.l10n())
                        .text(plan.l10n()));
    }
}

} // namespace slatewise::ReportArchive
