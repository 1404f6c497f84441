#pragma once

#include "vx/crypto/MessageDigest.h"

#include <cstdint>

namespace vx::crypto {

/// MD5 (RFC 1321): 16 bytes. For old formats and check sums only: it is not secure against attackers.
class VX_API MD5Digest : public MessageDigest {
public:
    MD5Digest() noexcept;
    MD5Digest(const MD5Digest&) noexcept = default;
    MD5Digest& operator=(const MD5Digest&) noexcept = default;
    ~MD5Digest() noexcept override;

    // MessageDigest
    void update(const signed char* bytes, int length) override;
    void getDigest(signed char* target, int size) override;
    void reset() override;
    int getLength() const override;
    String getName() const override;

private:
    static constexpr int BLOCK_SIZE = 64;
    static constexpr int DIGEST_SIZE = 16;

    void transform(const signed char* block) noexcept;
    /// The number of bytes in the incomplete block.
    int pending() const noexcept { return static_cast<int>(m_bits / 8 % BLOCK_SIZE); }
    void clear() noexcept;

    std::uint64_t m_bits;
    std::uint32_t m_state[4];
    signed char m_block[BLOCK_SIZE];
    signed char m_digest[DIGEST_SIZE];
};

} // namespace vx::crypto
