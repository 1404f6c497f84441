#include "vx/crypto/MD5Digest.h"

#include "vx/ByteOrder.h"
#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/crypto/detail/Wipe.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <utility>

namespace vx::crypto {

namespace {

constexpr auto LITTLE = std::endian::little;
constexpr std::uint32_t START[4] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
constexpr int STEPS = 64;

/// The first 32 fractional bits of |sin 1|, |sin 2| and so on, computed by rotating a vector by one radian each time.
constexpr std::array<std::uint32_t, STEPS> SINES = [] {
    constexpr double SIN = 0.84147098480789650665;
    constexpr double COS = 0.54030230586813971740;
    std::array<std::uint32_t, STEPS> sines {};
    double sine = SIN;
    double cosine = COS;
    for (std::uint32_t& bits : sines) {
        bits = static_cast<std::uint32_t>((sine < 0 ? -sine : sine) * 0x1p32);
        const double next = sine * COS + cosine * SIN;
        cosine = cosine * COS - sine * SIN;
        sine = next;
    }
    return sines;
}();

struct Round {
    int first; ///< the word of the block that its first step uses
    int stride; ///< from there to the word of the next step
    int turns[4];
};
constexpr Round ROUNDS[] = {
    {0, 1, {7, 12, 17, 22}},
    {1, 5, {5, 9, 14, 20}},
    {5, 3, {4, 11, 16, 23}},
    {0, 7, {6, 10, 15, 21}},
};

template <int step>
[[gnu::always_inline]] inline void turn(
    std::uint32_t& a, std::uint32_t b, std::uint32_t c, std::uint32_t d, const std::uint32_t (&words)[16]) noexcept
{
    constexpr Round ROUND = ROUNDS[step / 16];
    a += words[(ROUND.first + ROUND.stride * (step % 16)) % 16] + SINES[step];
    if constexpr (step < 16)
        a += d ^ (b & (c ^ d));
    else if constexpr (step < 32) { // (b & d) | (c & ~d) in two sums: only one of them waits for b, the step before
        a += c & ~d;
        a += b & d;
    } else if constexpr (step < 48)
        a += b ^ (c ^ d);
    else
        a += c ^ (b | ~d);
    a = b + std::rotl(a, ROUND.turns[step % 4]);
}

template <std::size_t... fours>
[[gnu::always_inline]] inline void turnAll(std::uint32_t& a, std::uint32_t& b, std::uint32_t& c, std::uint32_t& d,
    const std::uint32_t (&words)[16], std::index_sequence<fours...>) noexcept
{
    ((turn<4 * fours>(a, b, c, d, words), turn<4 * fours + 1>(d, a, b, c, words),
         turn<4 * fours + 2>(c, d, a, b, words), turn<4 * fours + 3>(b, c, d, a, words)),
        ...);
}

} // namespace

MD5Digest::MD5Digest() noexcept
{
    clear();
}

MD5Digest::~MD5Digest() noexcept
{
    detail::wipe(m_bits);
    detail::wipe(m_state);
    detail::wipe(m_block);
    detail::wipe(m_digest);
}

void MD5Digest::update(const signed char* bytes, int length)
{
    if (length < 1)
        return;
    if (bytes == nullptr)
        throwResult(RESULT_POINTER);

    const int held = pending();
    m_bits += static_cast<std::uint64_t>(length) * 8;
    if (held > 0) {
        const int taken = std::min(length, BLOCK_SIZE - held);
        std::memcpy(m_block + held, bytes, static_cast<std::size_t>(taken));
        if (held + taken < BLOCK_SIZE)
            return;
        transform(m_block);
        bytes += taken;
        length -= taken;
    }
    for (; length >= BLOCK_SIZE; length -= BLOCK_SIZE) {
        transform(bytes);
        bytes += BLOCK_SIZE;
    }
    std::memcpy(m_block, bytes, static_cast<std::size_t>(length));
}

void MD5Digest::getDigest(signed char* target, int size)
{
    constexpr int SIZE_AT = BLOCK_SIZE - 8;
    static constexpr signed char PADDING[BLOCK_SIZE] = {-0x80};
    if (size < getLength())
        throwResult(RESULT_BUFFER_TOO_SMALL);
    if (target == nullptr)
        throwResult(RESULT_POINTER);

    const std::uint64_t bits = m_bits;
    const int held = pending();
    update(PADDING, held < SIZE_AT ? SIZE_AT - held : BLOCK_SIZE + SIZE_AT - held);
    vx::detail::storeNumber<LITTLE>(m_block + SIZE_AT, bits);
    transform(m_block);

    for (std::size_t index = 0; index < std::size(m_state); ++index)
        vx::detail::storeNumber<LITTLE>(m_digest + 4 * index, m_state[index]);
    std::memcpy(target, m_digest, sizeof m_digest);
    reset();
}

void MD5Digest::reset()
{
    clear();
}

int MD5Digest::getLength() const
{
    return DIGEST_SIZE;
}

String MD5Digest::getName() const
{
    return u"MD5";
}

void MD5Digest::transform(const signed char* block) noexcept
{
    std::uint32_t words[16];
    for (std::size_t index = 0; index < std::size(words); ++index)
        words[index] = vx::detail::loadNumber<std::uint32_t, LITTLE>(block + 4 * index);
    auto [a, b, c, d] = m_state;
    turnAll(a, b, c, d, words, std::make_index_sequence<STEPS / 4>());
    m_state[0] += a;
    m_state[1] += b;
    m_state[2] += c;
    m_state[3] += d;
}

void MD5Digest::clear() noexcept
{
    m_bits = 0;
    std::copy(std::begin(START), std::end(START), m_state);
    std::memset(m_block, 0, sizeof m_block);
    std::memset(m_digest, 0, sizeof m_digest);
}

} // namespace vx::crypto
