#include "MediaHashList/History.h"

#include "MediaHashList/IgnorePatterns.h"
#include "MediaHashList/ListError.h"
#include "Offload/TreeWalker.h"
#include "Platform/AppInfo.h"
#include "Platform/NameForms.h"
#include "Platform/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <new>
#include <set>
#include <utility>

namespace slatewise::MediaHashList {

namespace {

/// A list of a million files is a third of this.
constexpr std::int64_t kLargestList = std::int64_t{1} << 30;

void throwIfAsked(const std::stop_token& stop) {
    if (stop.stop_requested())
        throw CancellationError();
}

/// What there is room for in a file's name.
std::string shortened(std::string name, std::size_t room) {
    while (name.size() > room)
        name = Text::prefix(name, Text::length(name) - 1);
    return name;
}

/// Reads with `parse`, whose complaints then name the list.
template <typename Parse>
auto parsed(const RootFolder& root, const std::filesystem::path& list, std::string_view text,
            Parse&& parse) {
    try {
        return parse(text);
    } catch (const ListError& failure) {
        throw failure.in(root.path() / list);
    } catch (const std::bad_alloc&) {
        throw ListError(ListError::Reason::TooLarge, {}, root.path() / list);
    }
}

/// Does what reads a list, and hands on why that cannot be relied on.
template <typename Read>
void readOrComplain(const std::filesystem::path& list, const History::Complaint& complain,
                    Read&& read) {
    try {
        read();
    } catch (const Error& failure) {
        complain(list, failure);
    }
}

/// In the order of their names, which begin with their numbers. What another system keeps beside a
/// file, under a name of its own, is no list.
std::vector<std::string> listsIn(const RootFolder& folder) {
    auto names = folder.names();
    std::erase_if(names, [](const std::string& name) {
        return !name.ends_with(".mhl") || TreeWalker::shouldSkip(name, name, {});
    });
    return names;
}

/// Nothing vouches for them.
std::vector<ChainLink> unchainedLists(const RootFolder& folder) {
    std::vector<ChainLink> links;
    for (const auto& name : listsIn(folder))
        links.push_back({static_cast<int>(links.size()) + 1, name, {}});
    return links;
}

/// How one looks beneath a folder, which must outlive it.
NameForms::Look lookBeneath(const RootFolder& root) {
    return {[&root](const auto& item) { return root.exists(item); },
            [&root](const auto& folder) {
                return root.below(folder).names();
            }};
}

/// The lists that no link names: somebody took the link out, or the chain was never written.
std::vector<std::string> straysIn(const RootFolder& folder, const std::vector<ChainLink>& chain) {
    NameForms::Finder finder(lookBeneath(folder));
    std::set<std::string> named;
    for (const auto& link : chain)
        named.insert(finder.asItLies(link.fileName));
    auto names = listsIn(folder);
    std::erase_if(names, [&](const std::string& name) { return named.contains(name); });
    return names;
}

/// Generations that lists refer to. Each chain and each list is read once: a card may bring lists
/// that refer to one of them in a thousand ways.
class Referred {
public:
    /// `root` must outlive it.
    explicit Referred(const RootFolder& root) : root_(root), finder_(lookBeneath(root)) {}

    /// Whether a generation is the one that its chain names and that another list refers to.
    bool isThere(const std::filesystem::path& list, const std::string& c4) {
        try {
            const auto there = finder_.asItLies(list);
            const auto& chain = chainIn(there.parent_path());
            return chain.contains({Text::composed(list.filename().native()), c4}) &&
                   c4Of(there) == c4;
        } catch (const Error&) {
            return false;
        }
    }

private:
    /// Names, composed, and the values they are to have.
    using Chain = std::set<std::pair<std::string, std::string>>;

    // What cannot be read stays empty, and is not read again.

    const Chain& chainIn(const std::filesystem::path& folder) {
        const auto [known, isNew] = chains_.try_emplace(folder);
        if (isNew) {
            for (auto& link : readChain(readList(root_, folder / kChainName)))
                known->second.emplace(Text::composed(link.fileName), std::move(link.c4));
        }
        return known->second;
    }

    const std::string& c4Of(const std::filesystem::path& list) {
        const auto [known, isNew] = values_.try_emplace(list);
        if (isNew)
            known->second = hashOf(HashFormat::C4, readList(root_, list));
        return known->second;
    }

    const RootFolder& root_;
    NameForms::Finder finder_;
    std::map<std::filesystem::path, Chain> chains_;
    std::map<std::filesystem::path, std::string> values_;
};

std::string numbered(int number) {
    return fmt::format("{:04}_", number);
}

/// A list of ours that is whole and would be the chain's next; nothing when it is any other.
std::optional<UnfinishedList> unfinishedIn(const RootFolder& root,
                                           const std::filesystem::path& list, int number) {
    if (!list.filename().native().starts_with(numbered(number)))
        return std::nullopt;
    try {
        const auto text = readList(root, list);
        UnfinishedList found = {{number, list.filename(), hashOf(HashFormat::C4, text)},
                                readGeneration(text)};
        const auto& generation = found.generation;
        const auto below = list.parent_path().parent_path();
        Referred referred(root);
        const bool isWhole =
            generation.creator.tool == AppInfo::name &&
            std::none_of(generation.files.begin(), generation.files.end(), hasFailed) &&
            std::all_of(
                generation.references.begin(), generation.references.end(),
                [&](const auto& each) { return referred.isThere(below / each.path, each.c4); });
        return isWhole ? std::optional(std::move(found)) : std::nullopt;
    } catch (const Error&) {
        return std::nullopt;
    }
}

/// Whether the only list is a first one whose writer ended before there was a chain.
bool isChainToCome(const RootFolder& root, const std::filesystem::path& folder) {
    if (root.exists(folder / kChainName))
        return false;
    const auto lists = listsIn(root.below(folder));
    return lists.size() == 1 && unfinishedIn(root, folder / lists.front(), 1);
}

/// The folder of the history's own is locked: its lists may not have one yet.
std::shared_ptr<const FileDescriptor> lockToAppend(const RootFolder& root,
                                                   const std::filesystem::path& below) {
    const auto folder = root.below(below);
    auto lock = folder.tryToLock();
    // Not every file system has locks.
    if (!lock && errno == EWOULDBLOCK)
        throw PosixError("lock", root.path() / below / kHistoryFolder, EBUSY);
    return std::make_shared<const FileDescriptor>(std::move(lock));
}

} // namespace

bool hasLists(const RootFolder& root, const std::filesystem::path& below) {
    const auto folder = below / kHistoryFolder;
    try {
        return root.exists(folder / kChainName) || !listsIn(root.below(folder)).empty();
    } catch (const PosixError& failure) {
        if (failure.code() == ENOENT || failure.code() == ENOTDIR)
            return false;
        throw;
    }
}

std::string readList(const RootFolder& root, const std::filesystem::path& file) {
    try {
        return root.read(file, kLargestList);
    } catch (const std::bad_alloc&) {
        throw ListError(ListError::Reason::TooLarge, {}, root.path() / file);
    } catch (const PosixError& failure) {
        if (failure.code() == EFBIG)
            throw ListError(ListError::Reason::TooLarge, {}, root.path() / file);
        throw;
    }
}

bool isPassingName(std::string_view name) {
    constexpr std::string_view kShape = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx.tmp";
    return std::equal(
        name.begin(), name.end(), kShape.begin(), kShape.end(), [](char letter, char wanted) {
            return wanted == 'x'
                       ? std::string_view("0123456789abcdef").find(letter) != std::string_view::npos
                       : letter == wanted;
        });
}

History History::load(const RootFolder& root, std::filesystem::path below,
                      const std::stop_token& stop) {
    return loadReadable(
        root, std::move(below), [](const auto&, const Error&) { throw; }, stop);
}

History History::loadReadable(const RootFolder& root, std::filesystem::path below,
                              const Complaint& complain, const std::stop_token& stop) {
    throwIfAsked(stop);
    History history(root, std::move(below));
    const auto folder = history.below_ / kHistoryFolder;
    const auto chain = folder / kChainName;
    bool isWhole = true;
    const Complaint note = [&](const std::filesystem::path& list, const Error& failure) {
        isWhole = false;
        complain(list, failure);
    };
    try {
        if (!isChainToCome(root, folder))
            history.chain_ = parsed(root, chain, readList(root, chain), readChain);
    } catch (const Error& failure) {
        note(root.path() / chain, failure);
        history.chain_ = unchainedLists(root.below(folder));
    }
    history.readGenerations(note, stop);
    history.complainOfStrays(isWhole, complain);
    return history;
}

void History::readGenerations(const Complaint& complain, const std::stop_token& stop) {
    const auto folder = below_ / kHistoryFolder;
    NameForms::Finder finder(lookBeneath(*root_));
    for (const auto& link : chain_) {
        throwIfAsked(stop);
        const auto list = folder / link.fileName;
        readOrComplain(root_->path() / list, complain, [&] {
            const auto text = readList(*root_, finder.asItLies(list));
            if (!link.c4.empty() && hashOf(HashFormat::C4, text) != link.c4)
                throw ListError(ListError::Reason::NotTheChains, {}, root_->path() / list);
            generations_.push_back(parsed(*root_, list, text, readGeneration));
            fileNames_.push_back(link.fileName);
        });
    }
}

void History::complainOfStrays(bool isElseWhole, const Complaint& complain) {
    using Reason = ListError::Reason;
    const auto folder = below_ / kHistoryFolder;
    readOrComplain(root_->path() / folder, complain, [&] {
        const auto strays = straysIn(root_->below(folder), chain_);
        if (isElseWhole && strays.size() == 1)
            unfinished_ = unfinishedIn(*root_, folder / strays.front(), nextNumber());
        const auto why = !unfinished_                  ? Reason::NotTheChains
                         : unfinished_->canBeEntered() ? Reason::NotInChainYet
                                                       : Reason::OfUnfinishedOffload;
        for (const auto& name : strays) {
            const auto list = root_->path() / folder / name;
            readOrComplain(list, complain, [&] { throw ListError(why, {}, list); });
        }
    });
}

History History::toGoOn(const RootFolder& root, std::filesystem::path below) {
    auto lock = lockToAppend(root, below);
    auto history = hasLists(root, below) ? load(root, below) : History(root, std::move(below));
    history.lock_ = std::move(lock);
    return history;
}

void History::enterUnfinished(const RootFolder& root, std::filesystem::path below,
                              const std::string& c4) {
    const auto lock = lockToAppend(root, below);
    auto history = loadReadable(root, std::move(below), [](const auto&, const Error&) {});
    if (!history.unfinished_ || !history.unfinished_->canBeEntered() ||
        history.unfinished_->link.c4 != c4)
        throw ListError(ListError::Reason::NotTheChains, {},
                        root.path() / history.below_ / kHistoryFolder);
    history.writeChainWith(history.unfinished_->link);
}

std::vector<std::string> History::brokenReferences(const std::stop_token& stop) const {
    std::vector<std::string> broken;
    std::set<std::string> told;
    // Each generation refers to all that went before.
    std::set<std::pair<std::string, std::string>> seen;
    Referred referred(*root_);
    IgnoreList ignored(generations_.empty() ? std::vector<std::string>()
                                            : generations_.back().ignored);
    for (const auto& generation : generations_) {
        const bool isNewest = &generation == &generations_.back();
        for (const auto& reference : generation.references) {
            throwIfAsked(stop);
            const auto path = below_ / reference.path;
            const bool isGivenUp =
                !isNewest && ignored.ignores(reference.path) && !root_->exists(path);
            if (!isGivenUp && seen.emplace(reference.path, reference.c4).second &&
                !referred.isThere(path, reference.c4) && told.insert(path).second)
                broken.push_back(path);
        }
    }
    return broken;
}

int History::nextNumber() const {
    return static_cast<int>(chain_.size()) + 1;
}

std::string History::nextFileName(Instant createdAt) const {
    constexpr std::size_t kLongestName = 255;
    auto moment = Clock::iso8601(createdAt);
    std::erase(moment, ':');
    std::replace(moment.begin(), moment.end(), 'T', '_');
    const auto number = numbered(nextNumber());
    const auto end = fmt::format("_{}.mhl", moment);
    const auto folder = below_.empty() ? root_->path() : below_;
    return number +
           shortened(holdable(folder.filename().native()),
                     kLongestName - number.size() - end.size()) +
           end;
}

Reference History::append(Generation next) {
    sortInPostOrder(next);
    const auto folder = below_ / kHistoryFolder;
    root_->createFolders(folder);
    const auto text = writeGeneration(next);
    const ChainLink link = {nextNumber(), nextFileName(next.creator.createdAt),
                            hashOf(HashFormat::C4, text)};
    if (root_->exists(folder / link.fileName))
        throw PosixError("write", root_->path() / folder / link.fileName, EEXIST);
    root_->writeAtomically(folder / link.fileName, text);
    root_->syncVolume();
    writeChainWith(link);
    generations_.push_back(std::move(next));
    fileNames_.push_back(link.fileName);
    return {std::string(kHistoryFolder) + "/" + link.fileName, link.c4};
}

void History::writeChainWith(const ChainLink& link) {
    auto chain = chain_;
    chain.push_back(link);
    root_->writeAtomically(below_ / kHistoryFolder / kChainName, writeChain(chain));
    root_->syncVolume();
    chain_ = std::move(chain);
}

} // namespace slatewise::MediaHashList
