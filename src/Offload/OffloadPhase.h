#pragma once

#include <cstdint>
#include <string>
#include <type_traits>
#include <variant>

namespace slatewise {

/// Where an offload stands: the one value by which progress travels.
namespace Phase {

struct Idle {
    friend bool operator==(const Idle&, const Idle&) = default;
};
/// What the phases of a run at work have in common.
struct Figures {
    /// Path of the file at hand under the card's root.
    std::string file;
    int done = 0;
    int total = 0;
    /// Of the whole run, 0 to 1.
    double fraction = 0;
    double bytesPerSecond = 0;
    /// Of all files of the phase; a total of 0 is unknown.
    std::int64_t bytesDone = 0;
    std::int64_t bytesTotal = 0;
    friend bool operator==(const Figures&, const Figures&) = default;
};
/// The card is listed, for which there are no figures; where nothing is to be copied it is also
/// read. Files are counted as while copying.
struct Scanning : Figures {
    friend bool operator==(const Scanning&, const Scanning&) = default;
};
/// `done` is the number of the file at hand, from 1.
struct Copying : Figures {
    friend bool operator==(const Copying&, const Copying&) = default;
};
/// `done` are the files finished, from 0.
struct Verifying : Figures {
    friend bool operator==(const Verifying&, const Verifying&) = default;
};
struct Verified {
    /// Each once, on however many disks it now is.
    int files = 0;
    std::int64_t bytes = 0;
    int disks = 1;
    friend bool operator==(const Verified&, const Verified&) = default;
};
struct Hashed {
    int files = 0;
    friend bool operator==(const Hashed&, const Hashed&) = default;
};
struct Failed {
    std::string message;
    friend bool operator==(const Failed&, const Failed&) = default;
};

} // namespace Phase

using OffloadPhase = std::variant<Phase::Idle, Phase::Scanning, Phase::Copying, Phase::Verifying,
                                  Phase::Verified, Phase::Hashed, Phase::Failed>;

/// Those of a run at work; null for any other phase. Valid as long as the phase is.
inline const Phase::Figures* figuresOf(const OffloadPhase& phase) {
    return std::visit(
        []<typename At>(const At& at) -> const Phase::Figures* {
            if constexpr (std::is_base_of_v<Phase::Figures, At>)
                return &at;
            else
                return nullptr;
        },
        phase);
}

} // namespace slatewise
