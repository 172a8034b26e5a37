#pragma once

#include "Platform/FileDescriptor.h"
#include "Platform/Files/RootFolder.h"

#include <cstddef>
#include <filesystem>
#include <string_view>

namespace slatewise {

/// A report set on its way: in a folder of its own beside the place that is claimed for it, so that
/// who looks there sees a whole set or none. What is not put in place is taken away in the end, as
/// far as the disk allows; the claim stays, since without it the name could be somebody else's by
/// the next try. Lives no longer than its root. What touches the disk blocks its caller, on any
/// thread, and fails with `PosixError`.
class PassingSet {
public:
    /// For the claimed name `set` beneath `root`. Makes the folder, and those that it lies in.
    PassingSet(const RootFolder& root, std::filesystem::path set);
    ~PassingSet();
    PassingSet(const PassingSet&) = delete;
    PassingSet& operator=(const PassingSet&) = delete;

    /// Where the set is made.
    const RootFolder& folder() const { return folder_; }

    /// Gives the set its claimed name. Fails when anything but the claim bears that by now; who
    /// asks takes the set back then.
    void putInPlace();

    /// Takes the set's files away again, wherever they stand by now. False when some of them stay
    /// in place.
    bool takeBack() noexcept;

    /// Where people find the set once it is in place. For messages.
    std::filesystem::path path() const { return root_.path() / set_; }

    /// What the folder's name takes besides that of the set, and a number.
    static constexpr std::size_t kNameRoom = 6;

    /// Whether the name is one of such a folder.
    static bool isNameOfOne(std::string_view name);

private:
    const RootFolder& root_;
    std::filesystem::path set_;
    std::filesystem::path passing_;
    RootFolder folder_;
    /// Tells other programs that somebody is at work on it.
    FileDescriptor lock_;
    bool isInPlace_ = false;
};

} // namespace slatewise
