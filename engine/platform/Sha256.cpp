#include "Sha256.hpp"

#include <array>
#include <openssl/evp.h>
#include <stdexcept>

namespace brevant::platform {

namespace {

// Fetched once: an implicit fetch on every digest would look the algorithm
// up again for each file.
const EVP_MD* algorithm() {
    static EVP_MD* const fetched = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    return fetched;
}

} // namespace

Sha256::Sha256()
    : context_(EVP_MD_CTX_new()) {
    if (context_ == nullptr || EVP_DigestInit_ex(context_, algorithm(), nullptr) != 1) {
        EVP_MD_CTX_free(context_);
        throw std::bad_alloc();
    }
}

Sha256::~Sha256() {
    EVP_MD_CTX_free(context_);
}

void Sha256::update(std::span<const std::byte> bytes) {
    EVP_DigestUpdate(context_, bytes.data(), bytes.size());
}

std::string Sha256::hexDigest() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    EVP_DigestFinal_ex(context_, digest.data(), &length);
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string hex;
    hex.reserve(2 * static_cast<std::size_t>(length));
    for (unsigned int i = 0; i < length; ++i) {
        hex.push_back(kDigits[digest[i] >> 4]);
        hex.push_back(kDigits[digest[i] & 0x0F]);
    }
    return hex;
}

} // namespace brevant::platform
