#pragma once

#include "Platform/FileDescriptor.h"

#include <string>

/// Opens what lies beneath a folder that is held open, and nothing else.
namespace slatewise::OpenBeneath {

enum class Links {
    /// A link anywhere in the name is a failure, ELOOP.
    Refuse,
    /// Links are followed as long as they lead to something beneath the folder, be it by the
    /// folder's own path. One that leads out fails with EXDEV, and what it leads to is not looked
    /// at.
    FollowBeneath,
};

/// `flags` are those of `open`; new files are readable by all, less what the umask takes away.
/// Invalid, with the reason in `errno`, when it cannot be opened; EXDEV for what lies elsewhere, or
/// on another volume that is mounted beneath the folder.
FileDescriptor open(int base, const std::string& name, int flags, Links links);

} // namespace slatewise::OpenBeneath
