#include "vx/math/detail/LimbsVector.h"

#include "vx/math/detail/LimbsVectorTarget.h"

#if VX_ROW_PATHS

#include <algorithm>
#include <atomic>

namespace vx::math::detail {

namespace {

enum Support : int { UNKNOWN, NONE, VECTORS };

constinit std::atomic<int> g_support {UNKNOWN};

Support findSupport() noexcept
{
    __builtin_cpu_init();
    const bool hasAll = __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0
        && __builtin_cpu_supports("avx512dq") != 0 && __builtin_cpu_supports("avx512vbmi") != 0
        && __builtin_cpu_supports("avx512ifma") != 0 && __builtin_cpu_supports("bmi2") != 0;
    return hasAll ? VECTORS : NONE;
}

constexpr Size VECTOR_BYTES = DIGIT_BITS * LANES / 8; // that its digits take in a number
constexpr Size BLOCK_VECTORS = 4; // so many sums of low and of high halves hide the time of one multiplication
constexpr Size BLOCK = BLOCK_VECTORS * LANES;

constexpr Size digitsFor(Size limbs) noexcept
{
    return (limbs * LIMB_BITS + DIGIT_BITS - 1) / DIGIT_BITS;
}

/// The bytes of a number, of which the last vector may have fewer.
__mmask64 bytesFrom(Size place, Size limbs) noexcept
{
    const Size rest = limbs * sizeof(Limb) - place;
    return rest < 64 ? (__mmask64 {1} << rest) - 1 : ~__mmask64 {0};
}

VX_FOR_VECTORS inline Vector load(const void* place) noexcept
{
    return _mm512_loadu_si512(place);
}

/// Digits of 52 bits, and zeros up to a whole vector.
VX_FOR_VECTORS void cut(Limb* digits, Natural source) noexcept
{
    // An even digit begins with a byte, an odd one four bits later.
    const Vector bytes = _mm512_set_epi8(52, 51, 50, 49, 48, 47, 46, 45, 46, 45, 44, 43, 42, 41, 40, 39, 39, 38, 37, 36,
        35, 34, 33, 32, 33, 32, 31, 30, 29, 28, 27, 26, 26, 25, 24, 23, 22, 21, 20, 19, 20, 19, 18, 17, 16, 15, 14, 13,
        13, 12, 11, 10, 9, 8, 7, 6, 7, 6, 5, 4, 3, 2, 1, 0);
    const Vector shifts = _mm512_set_epi64(4, 0, 4, 0, 4, 0, 4, 0);
    const Vector mask = broadcast(DIGIT_MASK);
    const auto* const start = reinterpret_cast<const char*>(source.data());
    for (Size place = 0; place < source.size() * sizeof(Limb); place += VECTOR_BYTES, digits += LANES) {
        const Vector words = _mm512_maskz_loadu_epi8(bytesFrom(place, source.size()), start + place);
        const Vector shifted = _mm512_srlv_epi64(_mm512_permutexvar_epi8(bytes, words), shifts);
        _mm512_storeu_si512(digits, _mm512_and_si512(shifted, mask));
    }
}

/// Writes a number from the columns of a product, the sums of its digits for each place.
class Writer {
public:
    VX_FOR_VECTORS Writer(Limb* target, Size limbs) noexcept
        : m_target(reinterpret_cast<char*>(target))
        , m_limbs(limbs)
    {
    }

    /// The next columns, each below 2^63.
    VX_FOR_VECTORS void write(Vector columns) noexcept
    {
        const Vector mask = broadcast(DIGIT_MASK);
        const Vector above = _mm512_srli_epi64(columns, DIGIT_BITS);
        Vector digits
            = _mm512_add_epi64(_mm512_and_si512(columns, mask), _mm512_alignr_epi64(above, m_above, LANES - 1));
        m_above = above;
        // The rest is at most 1 for each digit. An addition of bits finds how far each one is carried.
        const unsigned int full = _mm512_cmpeq_epi64_mask(digits, mask);
        const unsigned int over = _mm512_cmpgt_epi64_mask(digits, mask);
        const unsigned int carries = (full + 2 * over + m_carry) ^ full;
        m_carry = carries >> LANES;
        digits = _mm512_mask_sub_epi64(digits, static_cast<__mmask8>(carries), digits, broadcast(~Limb {0}));
        put(_mm512_and_si512(digits, mask));
    }

private:
    /// The reverse of `cut`: both digits of a pair have a part of its seventh byte.
    VX_FOR_VECTORS void put(Vector digits) noexcept
    {
        constexpr char NO = 0;
        const Vector even = _mm512_set_epi8(NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, 54,
            53, 52, 51, 50, 49, 48, NO, NO, NO, NO, NO, NO, 38, 37, 36, 35, 34, 33, 32, NO, NO, NO, NO, NO, NO, 22, 21,
            20, 19, 18, 17, 16, NO, NO, NO, NO, NO, NO, 6, 5, 4, 3, 2, 1, 0);
        const Vector odd = _mm512_set_epi8(NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, 62, 61, 60, 59, 58, 57, 56,
            NO, NO, NO, NO, NO, NO, 46, 45, 44, 43, 42, 41, 40, NO, NO, NO, NO, NO, NO, 30, 29, 28, 27, 26, 25, 24, NO,
            NO, NO, NO, NO, NO, 14, 13, 12, 11, 10, 9, 8, NO, NO, NO, NO, NO, NO);
        constexpr __mmask64 EVEN = 0x7F * (1 | __mmask64 {1} << 13 | __mmask64 {1} << 26 | __mmask64 {1} << 39);
        constexpr __mmask64 ODD = EVEN << 6;
        const Vector words = _mm512_or_si512(_mm512_maskz_permutexvar_epi8(EVEN, even, digits),
            _mm512_maskz_permutexvar_epi8(ODD, odd, _mm512_slli_epi64(digits, 4)));
        if (m_place < m_limbs * sizeof(Limb)) {
            _mm512_mask_storeu_epi8(m_target + m_place, bytesFrom(m_place, m_limbs), words);
            m_place += VECTOR_BYTES;
        }
    }

    char* m_target;
    Size m_limbs;
    Size m_place = 0;
    Vector m_above = _mm512_setzero_si512();
    unsigned int m_carry = 0;
};

/// The sums of the products for a block of places: their low halves, and their high halves, which belong one place
/// higher. 2^11 products of each can be added.
class Columns {
public:
    VX_FOR_VECTORS Columns() noexcept
    {
        for (Size number = 0; number < BLOCK_VECTORS; ++number)
            m_low[number] = m_high[number] = _mm512_setzero_si512();
    }

    /// up[0] * down[0] + up[1] * down[-1] + ... for the first place, and one further in `down` for each next one. With
    /// steps of a whole vector, three of four vectors of `down` are at hand from the step before.
    VX_FOR_VECTORS void add(const Limb* up, const Limb* down, Size count) noexcept
    {
        for (Size start = 0; start < std::min(count, LANES); ++start) {
            const Limb* next = down - start;
            Vector others[BLOCK_VECTORS];
            for (Size number = 1; number < BLOCK_VECTORS; ++number)
                others[number - 1] = load(next + number * LANES);
            for (Size place = start; place < count; place += LANES, next -= LANES) {
                const Vector factor = broadcast(up[place]);
                for (Size number = BLOCK_VECTORS - 1; number > 0; --number)
                    others[number] = others[number - 1];
                others[0] = load(next);
                for (Size number = 0; number < BLOCK_VECTORS; ++number) {
                    m_low[number] = _mm512_madd52lo_epu64(m_low[number], factor, others[number]);
                    m_high[number] = _mm512_madd52hi_epu64(m_high[number], factor, others[number]);
                }
            }
        }
    }
    VX_FOR_VECTORS void twice() noexcept
    {
        for (Size number = 0; number < BLOCK_VECTORS; ++number) {
            m_low[number] = _mm512_add_epi64(m_low[number], m_low[number]);
            m_high[number] = _mm512_add_epi64(m_high[number], m_high[number]);
        }
    }
    /// `before` is the last vector of high halves of the block below, and then of this block.
    VX_FOR_VECTORS void write(Writer& writer, Vector& before) const noexcept
    {
        for (Size number = 0; number < BLOCK_VECTORS; ++number) {
            writer.write(_mm512_add_epi64(m_low[number], _mm512_alignr_epi64(m_high[number], before, LANES - 1)));
            before = m_high[number];
        }
    }

private:
    Vector m_low[BLOCK_VECTORS];
    Vector m_high[BLOCK_VECTORS];
};

/// A number's digits with zeros around them, so that each vector of them can be loaded that has one.
class Digits {
public:
    VX_FOR_VECTORS explicit Digits(Natural source) noexcept
        : m_count(digitsFor(source.size()))
    {
        std::fill_n(m_digits, BLOCK, 0);
        cut(m_digits + BLOCK, source);
        std::fill_n(m_digits + BLOCK + m_count, BLOCK, 0);
    }

    Size size() const noexcept { return m_count; }
    Limb* get() noexcept { return m_digits + BLOCK; }

private:
    Size m_count;
    Limb m_digits[digitsFor(MOST_VECTOR_LIMBS) + 2 * BLOCK + LANES];
};

} // namespace

bool hasVectors() noexcept
{
    int support = g_support.load(std::memory_order_relaxed);
    if (support == UNKNOWN) {
        support = findSupport();
        g_support.store(support, std::memory_order_relaxed);
    }
    return support == VECTORS;
}

VX_FOR_VECTORS void multiplyByVectors(Limb* target, Natural left, Natural right) noexcept
{
    Digits down(left);
    Limb up[digitsFor(MOST_VECTOR_LIMBS) + LANES];
    cut(up, right);
    const Size count = digitsFor(right.size());
    Writer writer(target, left.size() + right.size());
    Vector before = _mm512_setzero_si512();
    for (Size place = 0; place < down.size() + count; place += BLOCK) {
        const Size from = place < down.size() ? 0 : place - down.size() + 1;
        const Size to = std::min(count, place + BLOCK);
        Columns columns;
        if (from < to)
            columns.add(up + from, down.get() + place - from, to - from);
        columns.write(writer, before);
    }
}

/// Products of different digits occur twice. In each block those whose first factor is below the middle of its first
/// place are added once for both, and the other ones as in a product. For these, what was counted already is set to 0.
VX_FOR_VECTORS void squareByVectors(Limb* target, Natural source) noexcept
{
    Digits down(source);
    Limb up[digitsFor(MOST_VECTOR_LIMBS) + LANES];
    const Size count = down.size();
    std::copy_n(down.get(), count, up);
    Writer writer(target, 2 * source.size());
    Vector before = _mm512_setzero_si512();
    for (Size place = 0; place < 2 * count; place += BLOCK) {
        const Size from = place < count ? 0 : place - count + 1;
        const Size middle = place / 2;
        const Size to = std::min(count, place + BLOCK - middle);
        Columns columns;
        if (from < middle) {
            std::fill_n(down.get() + middle - std::min(middle, BLOCK / 2), std::min(middle, BLOCK / 2), 0);
            columns.add(up + from, down.get() + place - from, middle - from);
            columns.twice();
        }
        if (middle < to)
            columns.add(up + middle, down.get() + place - middle, to - middle);
        columns.write(writer, before);
    }
}

} // namespace vx::math::detail

#endif
