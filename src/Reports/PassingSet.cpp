#include "Reports/PassingSet.h"

#include "Platform/Error.h"
#include "Reports/ReportFolder.h"

#include <cerrno>
#include <string>
#include <utility>

namespace slatewise {

namespace {

/// Around the name, as long as the set is not whole.
constexpr std::string_view kStart = ".";
constexpr std::string_view kEnd = ".part";
static_assert(kStart.size() + kEnd.size() == PassingSet::kNameRoom);

/// Nobody but us knows of it.
std::filesystem::path makeFolder(const RootFolder& root, const std::filesystem::path& set) {
    root.createFolders(set.parent_path());
    const auto named = [&](const std::string& number) {
        std::string name(kStart);
        name += set.filename().native() + number;
        name += kEnd;
        return set.parent_path() / name;
    };
    auto passing = named("");
    // A broken disk may say for ever that a name is taken.
    constexpr int kMostAttempts = 1000;
    for (int number = 2; !root.createNewFolder(passing); ++number) {
        if (number > kMostAttempts)
            throw PosixError("mkdir", root.path() / passing, EEXIST);
        passing = named("." + std::to_string(number));
    }
    return passing;
}

RootFolder open(const RootFolder& root, const std::filesystem::path& passing) {
    try {
        return root.below(passing);
    } catch (...) {
        ReportFolder::removeIfEmpty(root, passing);
        throw;
    }
}

} // namespace

PassingSet::PassingSet(const RootFolder& root, std::filesystem::path set)
    : root_(root), set_(std::move(set)), passing_(makeFolder(root, set_)),
      folder_(open(root, passing_)), lock_(folder_.tryToLock()) {}

PassingSet::~PassingSet() {
    if (!isInPlace_)
        ReportFolder::remove(root_, passing_);
}

void PassingSet::putInPlace() {
    // Over our own claim, which is an empty folder: anything else is not replaced.
    root_.rename(passing_, set_);
    isInPlace_ = true;
    if (!root_.below(set_).isSame(folder_))
        throw PosixError("rename", path(), ENOENT);
    root_.below(set_.parent_path()).sync();
}

bool PassingSet::takeBack() noexcept {
    return ReportFolder::clear(folder_, "") || !isInPlace_;
}

bool PassingSet::isNameOfOne(std::string_view name) {
    return name.size() > kStart.size() + kEnd.size() && name.starts_with(kStart) &&
           name.ends_with(kEnd) &&
           ReportFolder::isNameOfSet(
               name.substr(kStart.size(), name.size() - kStart.size() - kEnd.size()));
}

} // namespace slatewise
