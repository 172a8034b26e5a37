#pragma once

#include <filesystem>

namespace slatewise::bench {

/// Each prints its table on standard output and removes what it made below the folder.

void benchLarge(const std::filesystem::path& folder);
void benchSmall(const std::filesystem::path& folder);
void benchProof(const std::filesystem::path& folder);
void benchMemory(const std::filesystem::path& folder);
void benchMillion(const std::filesystem::path& folder);
void benchWalk(const std::filesystem::path& folder);
void benchWalkMillion(const std::filesystem::path& folder);
void benchReports(const std::filesystem::path& folder);
void benchStore(const std::filesystem::path& folder);

} // namespace slatewise::bench
