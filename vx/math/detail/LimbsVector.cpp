#include "vx/math/detail/LimbsVector.h"

#include "vx/math/detail/LimbsVectorTarget.h"

#if VX_ROW_PATHS

#include <algorithm>

namespace vx::math::detail {

namespace {

bool findVectors() noexcept
{
#ifdef VX_NO_AVX512
    return false;
#else
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0
        && __builtin_cpu_supports("avx512dq") != 0 && __builtin_cpu_supports("avx512vbmi") != 0
        && __builtin_cpu_supports("avx512ifma") != 0 && __builtin_cpu_supports("bmi2") != 0;
#endif
}

constinit Support g_vectors {findVectors};

constexpr Size VECTOR_BYTES = DIGIT_BITS * LANES / 8; // that its digits take in a number
constexpr Size BLOCK_VECTORS = 4; // so many sums of low and of high halves hide the time of one multiplication
constexpr Size BLOCK = BLOCK_VECTORS * LANES;

// A sum of low and high halves stays below 2^63.
static_assert(2 * digitsFor(MOST_VECTOR_LIMBS) <= Size {1} << (LIMB_BITS - 1 - DIGIT_BITS));

/// The mask of the first bytes of a vector, which may have fewer.
__mmask64 lowBytes(Size count) noexcept
{
    return count < sizeof(Vector) ? (__mmask64 {1} << count) - 1 : ~__mmask64 {0};
}

VX_FOR_VECTORS inline Vector load(const void* place) noexcept
{
    return _mm512_loadu_si512(place);
}

/// Writes a product from the sums of products for each place.
class Writer {
public:
    VX_FOR_VECTORS Writer(Limb* target, Size limbs) noexcept
        : m_digits(target, limbs)
        , m_above(_mm512_setzero_si512())
    {
    }

    /// The next sums, of low and of high halves; the latter belong one place higher.
    VX_FOR_VECTORS void write(Vector low, Vector high) noexcept
    {
        const Vector shifted = _mm512_alignr_epi64(high, m_above, LANES - 1);
        m_above = high;
        m_digits.write(m_carrier.next(_mm512_add_epi64(low, shifted)));
    }

private:
    DigitWriter m_digits;
    Carrier m_carrier;
    Vector m_above;
};

/// The sums of the products for a block of places: their low halves, and their high halves, which belong one place
/// higher.
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
    VX_FOR_VECTORS void write(Writer& writer) const noexcept
    {
        for (Size number = 0; number < BLOCK_VECTORS; ++number)
            writer.write(m_low[number], m_high[number]);
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
        cutDigits(m_digits + BLOCK, source);
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
    return g_vectors.isThere();
}

VX_FOR_VECTORS void cutDigits(Limb* digits, Natural source) noexcept
{
    // An even digit begins with a byte, an odd one four bits later.
    const Vector bytes = _mm512_set_epi8(52, 51, 50, 49, 48, 47, 46, 45, 46, 45, 44, 43, 42, 41, 40, 39, 39, 38, 37, 36,
        35, 34, 33, 32, 33, 32, 31, 30, 29, 28, 27, 26, 26, 25, 24, 23, 22, 21, 20, 19, 20, 19, 18, 17, 16, 15, 14, 13,
        13, 12, 11, 10, 9, 8, 7, 6, 7, 6, 5, 4, 3, 2, 1, 0);
    const Vector shifts = _mm512_set_epi64(4, 0, 4, 0, 4, 0, 4, 0);
    const auto* start = reinterpret_cast<const char*>(source.data());
    for (Size rest = source.size() * sizeof(Limb); rest > 0; rest -= std::min(rest, VECTOR_BYTES)) {
        const Vector words = _mm512_maskz_loadu_epi8(lowBytes(rest), start);
        const Vector shifted = _mm512_srlv_epi64(_mm512_permutexvar_epi8(bytes, words), shifts);
        _mm512_storeu_si512(digits, _mm512_and_si512(shifted, broadcast(DIGIT_MASK)));
        start += VECTOR_BYTES;
        digits += LANES;
    }
}

/// The reverse of `cutDigits`: both digits of a pair have a part of its seventh byte.
VX_FOR_VECTORS void DigitWriter::write(Vector digits) noexcept
{
    constexpr char NO = 0;
    const Vector even = _mm512_set_epi8(NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, 54, 53,
        52, 51, 50, 49, 48, NO, NO, NO, NO, NO, NO, 38, 37, 36, 35, 34, 33, 32, NO, NO, NO, NO, NO, NO, 22, 21, 20, 19,
        18, 17, 16, NO, NO, NO, NO, NO, NO, 6, 5, 4, 3, 2, 1, 0);
    const Vector odd = _mm512_set_epi8(NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, NO, 62, 61, 60, 59, 58, 57, 56, NO,
        NO, NO, NO, NO, NO, 46, 45, 44, 43, 42, 41, 40, NO, NO, NO, NO, NO, NO, 30, 29, 28, 27, 26, 25, 24, NO, NO, NO,
        NO, NO, NO, 14, 13, 12, 11, 10, 9, 8, NO, NO, NO, NO, NO, NO);
    constexpr __mmask64 EVEN = 0x7F * (1 | __mmask64 {1} << 13 | __mmask64 {1} << 26 | __mmask64 {1} << 39);
    constexpr __mmask64 ODD = EVEN << 6;
    const Vector words = _mm512_or_si512(_mm512_maskz_permutexvar_epi8(EVEN, even, digits),
        _mm512_maskz_permutexvar_epi8(ODD, odd, _mm512_slli_epi64(digits, 4)));
    _mm512_mask_storeu_epi8(m_target, lowBytes(m_size), words);
    m_target += std::min(m_size, VECTOR_BYTES);
    m_size -= std::min(m_size, VECTOR_BYTES);
}

VX_FOR_VECTORS void multiplyByVectors(Limb* target, Natural left, Natural right) noexcept
{
    Digits down(left);
    Limb up[digitsFor(MOST_VECTOR_LIMBS) + LANES];
    cutDigits(up, right);
    const Size count = digitsFor(right.size());
    Writer writer(target, left.size() + right.size());
    for (Size place = 0; place < down.size() + count; place += BLOCK) {
        const Size from = place < down.size() ? 0 : place - down.size() + 1;
        const Size to = std::min(count, place + BLOCK);
        Columns columns;
        if (from < to)
            columns.add(up + from, down.get() + place - from, to - from);
        columns.write(writer);
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
    for (Size place = 0; place < 2 * count; place += BLOCK) {
        const Size from = place < count ? 0 : place - count + 1;
        const Size middle = place / 2;
        const Size to = std::min(count, place + BLOCK - middle);
        Columns columns;
        if (from < middle) {
            std::fill_n(down.get() + middle - BLOCK / 2, BLOCK / 2, 0);
            columns.add(up + from, down.get() + place - from, middle - from);
            columns.twice();
        }
        if (middle < to)
            columns.add(up + middle, down.get() + place - middle, to - middle);
        columns.write(writer);
    }
}

} // namespace vx::math::detail

#endif
