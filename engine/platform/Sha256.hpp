#pragma once

#include <cstddef>
#include <span>
#include <string>

struct evp_md_ctx_st;

namespace brevant::platform {

// An incremental SHA-256 digest (OpenSSL, which uses the processor's SHA
// instructions where there are some).
class Sha256 {
public:
    Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;
    Sha256(Sha256&&) = delete;
    Sha256& operator=(Sha256&&) = delete;
    ~Sha256();

    void update(std::span<const std::byte> bytes);

    // The digest of everything added, as 64 lowercase hexadecimal digits.
    // Ends the digest; add nothing after it.
    [[nodiscard]] std::string hexDigest();

private:
    evp_md_ctx_st* context_;
};

} // namespace brevant::platform
