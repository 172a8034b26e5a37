#include "Batch/ReportArchive.h"

#include "Language/L10n.h"
#include "Platform/Disks/MountPoints.h"
#include "Platform/Error.h"
#include "Platform/Text.h"
#include "Reports/ReportFolder.h"
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

void requireNoWayOut(const RootFolder& archive, const Disks& disks) {
    for (const auto& disk : disks) {
        const auto onDisk = below(disk->path(), archive.path());
        if (onDisk.empty())
            continue;
        try {
            if (!disk->below(onDisk).isSame(archive))
                throw PosixError("open", archive.path(), ELOOP);
        } catch (const PosixError& failure) {
            // Another disk may be mounted on the way, and the archive lie on that.
            if (failure.code() != EXDEV)
                throw;
        }
    }
}

/// What is chosen on a disk that is not there would be written beneath its mount point.
void requireMounted(const std::filesystem::path& archive, const BatchPlan& plan) {
    if (MountPoints::isBare(archive))
        throw Error(plan.l10n().archiveNotMounted(Text::legible(archive.native())));
}

} // namespace

std::shared_ptr<const RootFolder> open(const BatchPlan& plan, const Disks& disks) {
    const auto path = SupportPaths::reportsArchive(plan.settings);
    try {
        auto archive = std::make_shared<const RootFolder>(path);
        if (path != SupportPaths::defaultReportsDirectory())
            requireMounted(path, plan);
        requireNoWayOut(*archive, disks);
        ReportFolder::removeLeftovers(*archive, disks);
        return archive;
    } catch (const PosixError& failure) {
        throw Error(
            OffloadProblem::of(OffloadProblem::Kind::ReportsNotArchived, path.native(), failure)
                .text(plan.l10n()));
    }
}

} // namespace slatewise::ReportArchive
