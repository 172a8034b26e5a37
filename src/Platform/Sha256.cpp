#include "Platform/Sha256.h"

#include "Platform/Error.h"

#include <openssl/evp.h>

namespace slatewise {

struct Sha256::State {
    EVP_MD_CTX* context = EVP_MD_CTX_new();
    ~State() { EVP_MD_CTX_free(context); }
};

namespace {

/// A digest that was not fully computed must never be compared with anything.
void require(int success) {
    if (success != 1)
        throw Error("SHA-256 is not available");
}

} // namespace

Sha256::Sha256() : state_(std::make_unique<State>()) {
    require(state_->context ? EVP_DigestInit_ex(state_->context, EVP_sha256(), nullptr) : 0);
}

Sha256::~Sha256() = default;

void Sha256::update(std::span<const std::byte> bytes) {
    require(EVP_DigestUpdate(state_->context, bytes.data(), bytes.size()));
}

Sha256::Digest Sha256::finish() {
    Digest digest;
    require(EVP_DigestFinal_ex(state_->context, digest.data(), nullptr));
    return digest;
}

} // namespace slatewise
