#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace slatewise {

/// A running SHA-256. Feed it, then take the digest once. One thread at a time.
class Sha256 {
public:
    using Digest = std::array<std::uint8_t, 32>;

    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    void update(std::span<const std::byte> bytes);
    Digest finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace slatewise
