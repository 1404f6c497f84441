#include "vx/crypto/BlowFish.h"

#include "vx/ByteOrder.h"
#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/crypto/detail/Wipe.h"

#include <algorithm>
#include <cstring>

namespace vx::crypto {

namespace {

constexpr std::int32_t BLOCK_SIZE = 8;
constexpr int MAX_KEY = 56;
/// The rounds of one block depend on each other, so that several blocks at once take hardly longer than one.
constexpr int LANES = 4;

} // namespace

BlowFish::BlowFish(const signed char* key, int length)
{
    if (length < 0)
        throwResult(RESULT_INVALID_ARGUMENT);
    if (length > 0 && key == nullptr)
        throwResult(RESULT_POINTER);

    std::memcpy(m_pbox, s_pbox, sizeof m_pbox);
    std::memcpy(m_sbox, s_sbox, sizeof m_sbox);
    const int used = std::min(length, MAX_KEY);
    if (used == 0)
        return;

    int at = 0;
    for (std::uint32_t& word : m_pbox) {
        std::uint32_t bits = 0;
        for (std::size_t byte = 0; byte < sizeof bits; ++byte) {
            bits = bits << 8 | static_cast<unsigned char>(key[at]);
            at = at + 1 < used ? at + 1 : 0;
        }
        word ^= bits;
    }

    std::uint32_t left = 0;
    std::uint32_t right = 0;
    const auto replace = [&](std::uint32_t* words, std::size_t count) {
        for (std::size_t index = 0; index < count; index += 2) {
            encryptBlock(left, right);
            words[index] = left;
            words[index + 1] = right;
        }
    };
    replace(m_pbox, std::size(m_pbox));
    for (auto& box : m_sbox)
        replace(box, std::size(box));
}

BlowFish::~BlowFish() noexcept
{
    detail::wipe(m_pbox);
    detail::wipe(m_sbox);
}

void BlowFish::encrypt(signed char* target, const signed char* source, std::int32_t length) const
{
    crypt<true>(target, source, length);
}

void BlowFish::decrypt(signed char* target, const signed char* source, std::int32_t length) const
{
    crypt<false>(target, source, length);
}

void BlowFish::encryptBlock(std::uint32_t& left, std::uint32_t& right) const noexcept
{
    std::uint32_t lefts[] = {left};
    std::uint32_t rights[] = {right};
    cryptLanes<true>(lefts, rights);
    left = lefts[0];
    right = rights[0];
}

void BlowFish::decryptBlock(std::uint32_t& left, std::uint32_t& right) const noexcept
{
    std::uint32_t lefts[] = {left};
    std::uint32_t rights[] = {right};
    cryptLanes<false>(lefts, rights);
    left = lefts[0];
    right = rights[0];
}

inline std::uint32_t BlowFish::mix(std::uint32_t half) const noexcept
{
    return ((m_sbox[0][half >> 24] + m_sbox[1][half >> 16 & 0xFF]) ^ m_sbox[2][half >> 8 & 0xFF])
        + m_sbox[3][half & 0xFF];
}

template <bool forwards, int lanes>
inline void BlowFish::cryptLanes(std::uint32_t (&left)[lanes], std::uint32_t (&right)[lanes]) const noexcept
{
    const auto word = [this](int index) { return m_pbox[forwards ? index : ROUNDS + 1 - index]; };
    for (int round = 0; round < ROUNDS; round += 2) { // after two rounds the halves are in their old places
#pragma GCC unroll LANES
        for (int lane = 0; lane < lanes; ++lane) {
            left[lane] ^= word(round);
            right[lane] ^= mix(left[lane]);
        }
#pragma GCC unroll LANES
        for (int lane = 0; lane < lanes; ++lane) {
            right[lane] ^= word(round + 1);
            left[lane] ^= mix(right[lane]);
        }
    }
#pragma GCC unroll LANES
    for (int lane = 0; lane < lanes; ++lane) {
        const std::uint32_t last = left[lane] ^ word(ROUNDS);
        left[lane] = right[lane] ^ word(ROUNDS + 1);
        right[lane] = last;
    }
}

template <bool forwards, int lanes>
inline void BlowFish::cryptBlocks(signed char* target, const signed char* source) const noexcept
{
    constexpr auto BIG = std::endian::big;
    std::uint32_t left[lanes];
    std::uint32_t right[lanes];
#pragma GCC unroll LANES
    for (int lane = 0; lane < lanes; ++lane) {
        left[lane] = vx::detail::loadNumber<std::uint32_t, BIG>(source + BLOCK_SIZE * lane);
        right[lane] = vx::detail::loadNumber<std::uint32_t, BIG>(source + BLOCK_SIZE * lane + 4);
    }
    cryptLanes<forwards>(left, right);
#pragma GCC unroll LANES
    for (int lane = 0; lane < lanes; ++lane) {
        vx::detail::storeNumber<BIG>(target + BLOCK_SIZE * lane, left[lane]);
        vx::detail::storeNumber<BIG>(target + BLOCK_SIZE * lane + 4, right[lane]);
    }
}

template <bool forwards>
void BlowFish::crypt(signed char* target, const signed char* source, std::int32_t length) const
{
    if (length % BLOCK_SIZE != 0)
        throw Exception(u"only supports 8 byte block boundaries");
    if (length > 0 && (target == nullptr || source == nullptr))
        throwResult(RESULT_POINTER);

    for (; length >= LANES * BLOCK_SIZE; length -= LANES * BLOCK_SIZE) {
        cryptBlocks<forwards, LANES>(target, source);
        target += LANES * BLOCK_SIZE;
        source += LANES * BLOCK_SIZE;
    }
    for (; length > 0; length -= BLOCK_SIZE) {
        cryptBlocks<forwards, 1>(target, source);
        target += BLOCK_SIZE;
        source += BLOCK_SIZE;
    }
}

} // namespace vx::crypto
