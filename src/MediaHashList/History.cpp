#include "MediaHashList/History.h"

#include "Platform/Error.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>

namespace slatewise::MediaHashList {

namespace {

constexpr std::string_view kChainName = "ascmhl_chain.xml";
/// A list of a million files is a third of this.
constexpr std::int64_t kLargestList = std::int64_t{1} << 30;

/// A name can hold what XML or another disk cannot.
std::string portable(const std::string& name) {
    std::string text;
    for (const char byte : Text::displayable(name))
        text += static_cast<unsigned char>(byte) < ' ' || byte == '/' ? '_' : byte;
    return text;
}

std::string fileName(int number, const std::filesystem::path& root, Instant createdAt) {
    auto moment = Clock::iso8601(createdAt);
    std::erase(moment, ':');
    std::replace(moment.begin(), moment.end(), 'T', '_');
    return fmt::format("{:04}_{}_{}.mhl", number, portable(root.filename().native()), moment);
}

const FileValue* valueIn(const std::vector<FileValue>& values, HashFormat format) {
    const auto found = std::find_if(values.begin(), values.end(),
                                    [&](const auto& value) { return value.format == format; });
    return found == values.end() ? nullptr : &*found;
}

/// A format that is new to a file is proved by one that is not.
HashAction actionOf(const FileValue& value, const std::vector<FileValue>& earlier) {
    const auto* known = valueIn(earlier, value.format);
    if (!known)
        return HashAction::Verified;
    return known->value == value.value ? HashAction::Verified : HashAction::Failed;
}

} // namespace

std::string readList(const std::filesystem::path& file) {
    std::error_code failure;
    // What a link leads to is none of the tree's.
    if (!std::filesystem::is_regular_file(std::filesystem::symlink_status(file, failure)))
        throw PosixError("open", file, failure ? failure.value() : ENOENT);
    if (FileSystem::attributes(file).sizeBytes > kLargestList)
        throw PosixError("read", file, EFBIG);
    return FileSystem::read(file);
}

bool History::isIn(const std::filesystem::path& root) {
    return FileSystem::exists(root / kHistoryFolder / kChainName);
}

History History::load(const std::filesystem::path& root) {
    History history(root);
    if (!isIn(root))
        return history;
    const auto folder = root / kHistoryFolder;
    if (std::filesystem::is_symlink(folder))
        throw PosixError("open", folder, ELOOP);
    history.chain_ = readChain(readList(folder / kChainName));
    for (const auto& link : history.chain_) {
        const auto text = readList(folder / link.fileName);
        if (hashOf(HashFormat::C4, text) != link.c4)
            throw Error(Text::displayable((folder / link.fileName).native()) +
                        ": not the list that the chain names");
        history.generations_.push_back(readGeneration(text));
    }
    return history;
}

std::map<std::string, std::vector<FileValue>> History::known() const {
    std::map<std::string, std::vector<FileValue>> known;
    for (const auto& generation : generations_) {
        for (const auto& file : generation.files) {
            auto& values = known[file.path];
            for (const auto& value : file.values) {
                if (!valueIn(values, value.format) && value.action != HashAction::Failed)
                    values.push_back(value);
            }
        }
    }
    return known;
}

void History::judge(Generation& next) const {
    const auto earlier = known();
    for (auto& file : next.files) {
        const auto found = earlier.find(file.path);
        for (auto& value : file.values)
            value.action =
                found == earlier.end() ? HashAction::Original : actionOf(value, found->second);
    }
}

int History::nextNumber() const {
    int last = 0;
    for (const auto& link : chain_)
        last = std::max(last, link.number);
    return last + 1;
}

void History::append(Generation next) {
    sortInPostOrder(next);
    const auto folder = root_ / kHistoryFolder;
    FileSystem::createFolders(folder);
    const auto text = writeGeneration(next);
    const int number = nextNumber();
    const auto name = fileName(number, root_, next.creator.createdAt);
    FileSystem::writeAtomically(folder / name, text);
    FileSystem::syncVolume(folder);
    auto chain = chain_;
    chain.push_back({number, name, hashOf(HashFormat::C4, text)});
    FileSystem::writeAtomically(folder / kChainName, writeChain(chain));
    FileSystem::syncVolume(folder);
    chain_ = std::move(chain);
    generations_.push_back(std::move(next));
}

} // namespace slatewise::MediaHashList
