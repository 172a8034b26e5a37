#include "MediaHashList/History.h"

#include "MediaHashList/ListError.h"
#include "Offload/TreeWalker.h"
#include "Platform/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace slatewise::MediaHashList {

namespace {

/// A list of a million files is a third of this.
constexpr std::int64_t kLargestList = std::int64_t{1} << 30;

/// What there is room for in a file's name.
std::string shortened(std::string name, std::size_t room) {
    while (name.size() > room)
        name = Text::prefix(name, Text::length(name) - 1);
    return name;
}

const FileValue* valueIn(const std::vector<FileValue>& values, HashFormat format) {
    const auto found = std::find_if(values.begin(), values.end(),
                                    [&](const auto& value) { return value.format == format; });
    return found == values.end() ? nullptr : &*found;
}

/// A format that is new to a file stands beside one that is not, which says whether it is the same.
HashAction actionOf(const FileValue& value, const std::vector<FileValue>& earlier) {
    if (earlier.empty())
        return HashAction::Original;
    const auto* known = valueIn(earlier, value.format);
    return !known || known->value == value.value ? HashAction::Verified : HashAction::Failed;
}

bool hasFailed(const HashedFile& file) {
    return std::any_of(file.values.begin(), file.values.end(),
                       [](const auto& value) { return value.action == HashAction::Failed; });
}

/// Values go where their file went. All are taken before any is put down: two files may have
/// changed names with each other.
void followRenames(const Generation& generation, KnownValues& known) {
    KnownValues moved;
    for (const auto& file : generation.files) {
        const auto earlier = known.find(file.previousPath);
        if (earlier == known.end() || file.previousPath == file.path)
            continue;
        moved.insert_or_assign(file.path, std::move(earlier->second));
        known.erase(earlier);
    }
    for (auto& [path, values] : moved)
        known.insert_or_assign(path, std::move(values));
}

/// Reads with `parse`, whose complaints then name the list.
template <typename Parse>
auto parsed(const RootFolder& root, const std::filesystem::path& list, std::string_view text,
            Parse&& parse) {
    try {
        return parse(text);
    } catch (const ListError& failure) {
        throw failure.in(root.path() / list);
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

/// The lists that no link names: somebody took the link out, or the chain was never written.
std::vector<std::string> straysIn(const RootFolder& folder, const std::vector<ChainLink>& chain) {
    std::set<std::string_view> named;
    for (const auto& link : chain)
        named.insert(link.fileName);
    auto names = listsIn(folder);
    std::erase_if(names, [&](const std::string& name) { return named.contains(name); });
    return names;
}

/// Whether a generation is the one that its chain names and that another list refers to.
bool isThere(const RootFolder& root, const std::filesystem::path& list, const std::string& c4) {
    try {
        const auto chain = readChain(readList(root, list.parent_path() / kChainName));
        return std::any_of(chain.begin(), chain.end(),
                           [&](const ChainLink& link) {
                               return link.fileName == list.filename() && link.c4 == c4;
                           }) &&
               hashOf(HashFormat::C4, readList(root, list)) == c4;
    } catch (const Error&) {
        return false;
    }
}

} // namespace

std::string readList(const RootFolder& root, const std::filesystem::path& file) {
    return root.read(file, kLargestList);
}

History History::load(const RootFolder& root, std::filesystem::path below) {
    return loadReadable(root, std::move(below), [](const auto&, const Error&) { throw; });
}

History History::loadReadable(const RootFolder& root, std::filesystem::path below,
                              const Complaint& complain) {
    History history(root, std::move(below));
    const auto folder = history.below_ / kHistoryFolder;
    const auto chain = folder / kChainName;
    try {
        history.chain_ = parsed(root, chain, readList(root, chain), readChain);
    } catch (const Error& failure) {
        complain(root.path() / chain, failure);
        history.chain_ = unchainedLists(root.below(folder));
    }
    for (const auto& link : history.chain_) {
        const auto list = folder / link.fileName;
        readOrComplain(root.path() / list, complain, [&] {
            const auto text = readList(root, list);
            if (!link.c4.empty() && hashOf(HashFormat::C4, text) != link.c4)
                throw ListError(ListError::Reason::NotTheChains, {}, root.path() / list);
            history.generations_.push_back(parsed(root, list, text, readGeneration));
        });
    }
    readOrComplain(root.path() / folder, complain, [&] {
        for (const auto& name : straysIn(root.below(folder), history.chain_)) {
            const auto list = root.path() / folder / name;
            readOrComplain(list, complain,
                           [&] { throw ListError(ListError::Reason::NotTheChains, {}, list); });
        }
    });
    return history;
}

KnownValues History::known() const {
    KnownValues known;
    for (const auto& generation : generations_) {
        followRenames(generation, known);
        for (const auto& file : generation.files) {
            auto& values = known[file.path];
            // What stands beside a value that failed was computed of other bytes.
            if (hasFailed(file))
                continue;
            for (const auto& value : file.values) {
                if (!valueIn(values, value.format))
                    values.push_back(value);
            }
        }
    }
    return known;
}

std::vector<std::string> History::brokenReferences() const {
    std::vector<std::string> broken;
    for (const auto& generation : generations_) {
        for (const auto& reference : generation.references) {
            const auto path = below_ / reference.path;
            if (!isThere(*root_, path, reference.c4) &&
                std::find(broken.begin(), broken.end(), path) == broken.end())
                broken.push_back(path);
        }
    }
    return broken;
}

void History::judge(Generation& next) const {
    const auto earlier = known();
    std::erase_if(next.files, [&](const HashedFile& file) {
        return hasFailed(file) && !earlier.contains(file.path);
    });
    for (auto& file : next.files) {
        if (hasFailed(file))
            continue;
        const auto found = earlier.find(file.path);
        const auto values = found == earlier.end() ? std::vector<FileValue>() : found->second;
        for (auto& value : file.values)
            value.action = actionOf(value, values);
    }
}

int History::nextNumber() const {
    return static_cast<int>(chain_.size()) + 1;
}

std::string History::nextFileName(Instant createdAt) const {
    constexpr std::size_t kLongestName = 255;
    auto moment = Clock::iso8601(createdAt);
    std::erase(moment, ':');
    std::replace(moment.begin(), moment.end(), 'T', '_');
    const auto number = fmt::format("{:04}_", nextNumber());
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
    root_->writeAtomically(folder / link.fileName, text);
    root_->syncVolume();
    auto chain = chain_;
    chain.push_back(link);
    root_->writeAtomically(folder / kChainName, writeChain(chain));
    root_->syncVolume();
    chain_ = std::move(chain);
    generations_.push_back(std::move(next));
    return {std::string(kHistoryFolder) + "/" + link.fileName, link.c4};
}

} // namespace slatewise::MediaHashList
