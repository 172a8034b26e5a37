#include "Offload/KeptNames.h"

#include "Offload/TreeWalker.h"
#include "Platform/Error.h"
#include "Platform/NameForms.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace slatewise::KeptNames {

namespace {

using Kind = OffloadProblem::Kind;

/// What is wrong with the way to the session, if anything.
std::optional<OffloadProblem> lookOnTheWay(const RootFolder& disk,
                                           const std::filesystem::path& session) {
    std::filesystem::path parent;
    try {
        for (const auto& part : session) {
            const auto names = disk.below(parent).names();
            parent /= part;
            const bool isOurs = parent == session;
            const auto form = [isOurs](std::string_view name) {
                return isOurs ? Text::composed(name) : Text::caseFolded(Text::composed(name));
            };
            const auto isIt = [&, wanted = form(part.native())](const std::string& name) {
                return name == part.native() || form(name) == wanted;
            };
            if (std::none_of(names.begin(), names.end(), isIt))
                return OffloadProblem{Kind::NameNotKept, parent.native()};
        }
    } catch (const PosixError& failure) {
        return OffloadProblem::of(Kind::FolderNotRead, parent.native(), failure);
    }
    return std::nullopt;
}

/// What a walk finds below the session's folder.
class Listing {
public:
    explicit Listing(const RootFolder& session) {
        try {
            const auto noteUnread = [&](const std::string& item, int code) {
                // It went while it was listed. Were it a copy, its name would be missed.
                if (code == ENOENT && !item.empty())
                    return;
                const auto path = session.path() / item;
                unread_.insert(item);
                problems_.push_back(OffloadProblem::of(Kind::FolderNotRead, path.native(),
                                                       PosixError("open", path, code)));
            };
            for (auto& entry : TreeWalker::walk(session, {}, {}, {.unreadable = noteUnread}))
                names_.push_back(std::move(entry.relativePath));
        } catch (const PosixError& failure) {
            unread_.insert("");
            problems_.push_back(
                OffloadProblem::of(Kind::FolderNotRead, session.path().native(), failure));
        }
    }

    bool has(const std::string& name) const {
        return std::binary_search(names_.begin(), names_.end(), name);
    }

    /// Nobody knows what lies there, which is told.
    bool isUnread(const std::string& name) const {
        return std::any_of(unread_.begin(), unread_.end(), [&](const std::string& item) {
            return item.empty() || name == item || name.starts_with(item + "/");
        });
    }

    std::vector<OffloadProblem> takeProblems() { return std::move(problems_); }

    /// Of what none of `rows` is named after.
    std::vector<std::string_view> namesBeside(std::span<const FileCopyResult> rows) const {
        std::set<std::string_view> taken;
        for (const auto& row : rows)
            taken.insert(row.relativePath);
        std::vector<std::string_view> beside;
        std::ranges::copy_if(names_, std::back_inserter(beside),
                             [&](const auto& name) { return !taken.contains(name); });
        return beside;
    }

private:
    /// Sorted.
    std::vector<std::string> names_;
    std::set<std::string> unread_;
    std::vector<OffloadProblem> problems_;
};

} // namespace

std::vector<OffloadProblem> findLost(const RootFolder& disk, const std::filesystem::path& session,
                                     const RootFolder& held, std::span<FileCopyResult> rows) {
    Listing listing(held);
    auto problems = listing.takeProblems();
    if (auto problem = lookOnTheWay(disk, session))
        problems.insert(problems.begin(), std::move(*problem));
    std::map<std::string, FileCopyResult*> lost;
    for (auto& row : rows) {
        if (row.verifyStatus == VerifyStatus::Verified && !listing.has(row.relativePath))
            lost.emplace(row.relativePath, &row);
    }
    if (lost.empty())
        return problems;
    std::vector<std::string> names;
    names.reserve(lost.size());
    for (const auto& [name, row] : lost)
        names.push_back(name);
    for (const auto& same : NameForms::inOtherForms(names, listing.namesBeside(rows))) {
        // Each item is the copy of one row.
        if (same.lost.size() == 1)
            lost.erase(same.lost.front());
    }
    for (const auto& [name, row] : lost) {
        markFailed(*row, VerifyStatus::Failed);
        if (!listing.isUnread(name))
            problems.push_back({Kind::NameNotKept, name});
    }
    return OffloadProblem::shortened(std::move(problems));
}

} // namespace slatewise::KeptNames
