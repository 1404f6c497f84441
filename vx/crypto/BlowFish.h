#pragma once

#include "vx/Object.h"

#include <cstdint>

namespace vx::crypto {

/// The block cipher Blowfish (B. Schneier, "Description of a New Variable-Length Key, 64-Bit Block Cipher", 1993) with
/// 16 rounds. Each block of 8 bytes is encrypted separately, without chaining and padding, so equal blocks stay equal.
///
/// The object does not change after construction, and any number of threads may use it.
class VX_API BlowFish : public Object {
public:
    /// Only the first 56 bytes of the key are used. An empty key is allowed, but gives no secrecy. A negative
    /// `length` throws ResultException, and so does null with a `length` above 0.
    BlowFish(const signed char* key, int length);
    BlowFish(const BlowFish&) noexcept = default;
    BlowFish& operator=(const BlowFish&) noexcept = default;
    ~BlowFish() noexcept override;

    /// `length` counts bytes. If it is no multiple of 8, the call throws Exception and writes nothing. Null with
    /// a `length` above 0 throws ResultException, and a `length` below 1 does nothing. `target` may be `source`.
    void encrypt(signed char* target, const signed char* source, std::int32_t length) const;
    void decrypt(signed char* target, const signed char* source, std::int32_t length) const;

protected:
    /// One block, as its two big-endian halves.
    void encryptBlock(std::uint32_t& left, std::uint32_t& right) const noexcept;
    void decryptBlock(std::uint32_t& left, std::uint32_t& right) const noexcept;

private:
    static constexpr int ROUNDS = 16;
    static constexpr int BOXES = 4;

    template <bool forwards, int lanes>
    void cryptLanes(std::uint32_t (&left)[lanes], std::uint32_t (&right)[lanes]) const noexcept;
    template <bool forwards, int lanes>
    void cryptBlocks(signed char* target, const signed char* source) const noexcept;
    template <bool forwards>
    void crypt(signed char* target, const signed char* source, std::int32_t length) const;
    std::uint32_t mix(std::uint32_t half) const noexcept;

    /// The fractional digits of pi.
    static const std::uint32_t s_pbox[ROUNDS + 2];
    static const std::uint32_t s_sbox[BOXES][256];

    std::uint32_t m_pbox[ROUNDS + 2];
    std::uint32_t m_sbox[BOXES][256];
};

} // namespace vx::crypto
