#include "MediaHashList/TransferLists.h"

#include "Language/L10n.h"
#include "MediaHashList/IgnorePatterns.h"
#include "MediaHashList/ListError.h"
#include "Offload/OffloadError.h"
#include "Offload/TreeWalker.h"
#include "Platform/Error.h"
#include "Platform/NameForms.h"

#include <algorithm>

namespace slatewise::MediaHashList {

namespace {

using Kind = OffloadProblem::Kind;

std::vector<FileValue> listed(const HashValues& values, const std::optional<Instant>& hashedAt,
                              std::optional<HashAction> action) {
    std::vector<FileValue> result;
    for (const auto& value : values)
        result.push_back({value.format, value.text, action, hashedAt});
    return result;
}

/// The parts of histories that are copied.
std::vector<InventoryEntry> listsAmong(std::span<const InventoryEntry> entries) {
    std::vector<InventoryEntry> lists;
    for (const auto& entry : entries) {
        if (entry.shouldCopy && liesInHistory(entry.relativePath))
            lists.push_back(entry);
    }
    return lists;
}

} // namespace

bool TransferLists::areAmong(std::span<const InventoryEntry> entries) {
    return !foldersWithHistory(listsAmong(entries)).empty();
}

void TransferLists::readHistories(const RootFolder& card, std::span<const InventoryEntry> entries,
                                  const std::stop_token& stop) {
    std::unordered_set<std::string_view> present;
    for (const auto& entry : entries) {
        // What has no bytes of its own, as a folder or a link that is not followed, is not read and
        // so is not the file that a list names.
        if (entry.shouldCopy && !entry.isDirectory)
            present.insert(entry.relativePath);
    }
    withHistory_ = foldersWithHistory(listsAmong(entries));
    IgnoredBelow readable;
    for (const auto& folder : withHistory_) {
        const auto prefix = folder.empty() ? "" : folder + "/";
        try {
            const auto history = History::load(card, folder, stop);
            if (const auto broken = history.brokenReferences(stop); !broken.empty())
                throw ListError(ListError::Reason::NotAsReferred, {}, card.path() / broken.front());
            auto known = history.known();
            for (const auto& path : history.givenUp(known)) {
                if (!present.contains(prefix + path))
                    known.erase(path);
            }
            for (auto& [path, values] : known) {
                auto& all = known_[prefix + path];
                all.insert(all.end(), values.begin(), values.end());
            }
            // What an older one ignored the newest may name.
            readable[folder] = history.generations().empty() ? std::vector<std::string>()
                                                             : history.generations().back().ignored;
        } catch (const CancellationError&) {
            throw;
        } catch (const std::exception&) {
            unreadable_.push_back(
                {card.path() / prefix / kHistoryFolder, std::current_exception()});
        }
    }
    meetOtherForms(present);
    IgnoreLists ignored(readable);
    for (const auto& entry : entries) {
        const auto& path = entry.relativePath;
        // What a history may say that cannot be read, nobody knows.
        if (present.contains(path) && readable.contains(folderOf(path, withHistory_)) &&
            !liesInHistory(path) && !known_.contains(path) && !ignored.ignores(path))
            unlisted_.push_back(path);
    }
    const auto skipNames = settings_.skipNames();
    for (const auto& [path, values] : known_) {
        const std::string_view name = path;
        if (!present.contains(name) &&
            !TreeWalker::shouldSkip(name, name.substr(name.rfind('/') + 1), skipNames))
            missing_.push_back(path);
    }
}

/// Whoever wrote a list may have had names in another Unicode form than the card has them in now.
void TransferLists::meetOtherForms(const std::unordered_set<std::string_view>& present) {
    std::vector<std::string> lost;
    for (const auto& [path, values] : known_) {
        if (NameForms::mayHaveForms(path) && !present.contains(path))
            lost.push_back(path);
    }
    if (lost.empty())
        return;
    const std::vector<std::string_view> there(present.begin(), present.end());
    for (const auto& [found, listed] : NameForms::inOtherForms(lost, there)) {
        if (listed.size() > 1 || known_.contains(found))
            continue;
        auto values = known_.extract(listed.front());
        values.key() = found;
        known_.insert(std::move(values));
        listedAs_.emplace(found, listed.front());
    }
}

std::vector<HashFormat> TransferLists::formatsOf(const std::string& path) const {
    if (liesInHistory(path))
        return {};
    std::vector<HashFormat> formats;
    if (settings_.writesHashList)
        formats.push_back(HashFormat::XXH128);
    const auto found = known_.find(path);
    if (found == known_.end())
        return formats;
    for (const auto& value : found->second) {
        if (std::find(formats.begin(), formats.end(), value.format) == formats.end())
            formats.push_back(value.format);
    }
    return formats;
}

std::vector<OffloadProblem> TransferLists::differences(const OffloadOutcome& outcome) const {
    std::vector<OffloadProblem> problems;
    // It cannot go on where a next one is wanted. Who wanted none is only told: the copy is whole.
    const auto notRead =
        settings_.writesHashList ? Kind::CardListNotRead : Kind::CardListNotChecked;
    for (const auto& list : unreadable_) {
        problems.push_back({notRead, list.place.native(), BothLanguages::of([&](L10n l10n) {
                                return describe(list.failure, l10n);
                            })});
    }
    for (const auto& path : missing_)
        problems.push_back({Kind::ListedFileMissing, path});
    for (const auto& path : unlisted_)
        problems.push_back({Kind::CardFileNotListed, path});
    for (const auto& row : outcome.files) {
        const auto found = known_.find(row.relativePath);
        const auto& source = row.further->source;
        const bool wasRead = row.action == RowAction::Copy || row.action == RowAction::Hash;
        if (found == known_.end() || !wasRead)
            continue;
        if (source.empty() || found->second.empty()) {
            problems.push_back({Kind::ListedFileUnproved, row.relativePath});
            continue;
        }
        const bool isAsListed =
            std::all_of(found->second.begin(), found->second.end(), [&](const FileValue& value) {
                return valueOf(source, value.format) == value.value;
            });
        if (!isAsListed)
            problems.push_back({Kind::CardDiffersFromList, row.relativePath});
    }
    return problems;
}

HashedTree TransferLists::treeOf(const OffloadOutcome& outcome) const {
    HashedTree tree;
    tree.creator = creatorHere(settings_);
    tree.process = Process::Transfer;
    tree.ignored = ignorePatterns(settings_.skipNames());
    for (const auto& row : outcome.files) {
        if (row.action == RowAction::Skip)
            continue;
        const bool isProved = row.verifyStatus == VerifyStatus::Verified;
        const auto& values = isProved ? row.further->source : row.further->readBack;
        if (values.empty()) {
            tree.unknownFiles.push_back(row.relativePath);
            continue;
        }
        const auto action = isProved ? std::optional<HashAction>() : HashAction::Failed;
        const auto other = listedAs_.find(row.relativePath);
        tree.files.push_back({row.relativePath, row.sizeBytes, row.mtime,
                              listed(values, row.further->hashedAt, action),
                              other == listedAs_.end() ? "" : other->second});
    }
    return tree;
}

AddedGenerations TransferLists::write(const RootFolder& destination,
                                      const std::filesystem::path& session,
                                      const OffloadOutcome& outcome) const {
    const auto count = [&](VerifyStatus status) {
        return std::count_if(outcome.files.begin(), outcome.files.end(),
                             [&](const auto& row) { return row.verifyStatus == status; });
    };
    const bool wasAnythingToProve =
        count(VerifyStatus::Skipped) < static_cast<std::ptrdiff_t>(outcome.files.size());
    const bool isNothingProved = wasAnythingToProve && count(VerifyStatus::Verified) == 0;
    if (settings_.verifyOnly || isNothingProved || !unreadable_.empty())
        return {};
    return addGenerations(destination, session, treeOf(outcome), withHistory_);
}

} // namespace slatewise::MediaHashList
