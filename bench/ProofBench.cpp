#include "Benches.h"
#include "Scratch.h"

#include "Offload/SHA256Hasher.h"
#include "Platform/Files/RootFolder.h"

#include <fmt/format.h>

#include <algorithm>

namespace slatewise::bench {

/// Reading back alone, beside what it can be at best: as fast as the slower of hash and disk.
void benchProof(const std::filesystem::path& folder) {
    constexpr int kRounds = 5;
    constexpr std::int64_t kFileBytes = std::int64_t{1} << 30;
    const auto card = folder / "card";
    makeFiles(card, 1, kFileBytes, 1);
    const std::filesystem::path name = "00000/00000.bin";
    const auto file = shellQuoted(card / name);
    const RootFolder root(card);
    std::vector<double> proof, hash, disk;
    for (int round = 0; round < kRounds; ++round) {
        dropCaches({card});
        proof.push_back(wallSeconds([&] {
            Transfer transfer;
            (void)SHA256Hasher::hashFile(transfer, {root, name});
        }));
        disk.push_back(wallSeconds(
            [&] { shell("dd status=none iflag=direct bs=1M of=/dev/null if=" + file); }));
        shell("cat " + file + " > /dev/null");
        hash.push_back(
            wallSeconds([&] { shell("openssl dgst -sha256 " + file + " > /dev/null"); }));
    }
    std::filesystem::remove_all(card);
    const double slower = std::max(median(hash), median(disk));
    fmt::print("Proof of one file of 1 GiB, median of {} rounds\n", kRounds);
    for (const auto& [way, seconds] :
         {std::pair("openssl dgst, cached", median(hash)), std::pair("direct read", median(disk)),
          std::pair("slatewise", median(proof))}) {
        record("proof of 1 GiB", way, "seconds", seconds);
        fmt::print("  {:<20}{:8.2f} s  {:8.0f} MB/s  {:6.2f} x the slower\n", way, seconds,
                   static_cast<double>(kFileBytes) / 1e6 / seconds, seconds / slower);
    }
    fmt::print("\n");
}

} // namespace slatewise::bench
