#pragma once

#include "vx/detail/RawArray.h"
#include "vx/detail/Wide.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

/// Arithmetic on natural numbers: arrays of words, the least significant first. Unless said otherwise a target may be
/// one of the operands but not overlap it by a part, and a count may be 0.
namespace vx::math::detail {

using Limb = std::uint64_t;
using Size = std::size_t;
using Natural = std::span<const Limb>;
using vx::detail::Wide;

inline constexpr int LIMB_BITS = 64;

static_assert(std::endian::native == std::endian::little, "bytes and units are read as words");

inline constexpr Limb high(Wide value) noexcept
{
    return static_cast<Limb>(value >> LIMB_BITS);
}

inline constexpr Wide wide(Limb upper, Limb lower) noexcept
{
    return static_cast<Wide>(upper) << LIMB_BITS | lower;
}

/// Uninitialised storage for intermediate results; small ones need no allocation. Throws std::bad_alloc.
class Scratch {
public:
    explicit Scratch(Size count)
    {
        if (count > INLINE)
            m_heap = vx::detail::makeRawArray<Limb>(static_cast<std::int64_t>(count));
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    Limb* get() noexcept { return m_heap ? m_heap.get() : m_inline; }
    const Limb* get() const noexcept { return m_heap ? m_heap.get() : m_inline; }

private:
    static constexpr Size INLINE = 32;

    vx::detail::RawArray<Limb> m_heap;
    Limb m_inline[INLINE];
};

/// The number of words without the zeros at the top.
inline Size trimmed(const Limb* limbs, Size count) noexcept
{
    while (count > 0 && limbs[count - 1] == 0)
        --count;
    return count;
}

/// -1, 0 or 1.
int compare(const Limb* left, const Limb* right, Size count) noexcept;
/// Of numbers whose highest word is not 0.
int compare(Natural left, Natural right) noexcept;

/// target[left] = left + right, with no more words in `right`. Returns the carry.
Limb add(Limb* target, Natural left, Natural right) noexcept;
/// target[left] = left - right, with no more words in `right`. Returns the borrow.
Limb subtract(Limb* target, Natural left, Natural right) noexcept;
/// target = source * factor + addend. Returns the word above.
Limb multiplyByLimb(Limb* target, Natural source, Limb factor, Limb addend = 0) noexcept;
/// target -= source * factor. Returns the word that is borrowed from above.
Limb subtractProduct(Limb* target, Natural source, Limb factor) noexcept;
/// By 0 to 63 bits. Returns the bits shifted out at the top; `target` may lie above `source`.
Limb shiftLeft(Limb* target, Natural source, int bits) noexcept;
/// By 0 to 63 bits; `target` may lie below `source`.
void shiftRight(Limb* target, Natural source, int bits) noexcept;

/// target[left + right] = left * right; `target` overlaps neither. Squaring, with the same array twice, takes less
/// time.
void multiply(Limb* target, Natural left, Natural right);

/// Of an odd number, modulo 2^64.
inline constexpr Limb inverseOf(Limb odd) noexcept
{
    Limb inverse = odd; // correct in three bits; each round doubles their number
    for (int round = 0; round < 5; ++round)
        inverse *= 2 - odd * inverse;
    return inverse;
}

/// Adds the multiple of an odd modulus that makes the lower half of product[2 * modulus] 0, given -1 / modulus[0]. The
/// sum is in the upper half; the lower half is unspecified. Returns the word above.
Limb addMultiple(Limb* product, Natural modulus, Limb negatedInverse) noexcept;

/// A divisor of one word with its precomputed reciprocal.
class LimbDivisor {
public:
    /// Not 0.
    explicit LimbDivisor(Limb divisor) noexcept;

    /// Divides a number of two words whose upper one is below the shifted divisor; all are shifted.
    Limb divide(Limb upper, Limb lower, Limb* remainder) const noexcept;
    /// quotient = source / divisor. Returns the remainder.
    Limb divide(Limb* quotient, Natural source) const noexcept;

private:
    int m_shift;
    Limb m_divisor; ///< with its top bit set
    Limb m_reciprocal;
};

/// quotient[source - divisor + 1] = source / divisor, remainder[divisor] = source % divisor. The divisor's highest word
/// is not 0 and it has no more words than the source; the targets overlap nothing.
void divide(Limb* quotient, Limb* remainder, Natural source, Natural divisor);

} // namespace vx::math::detail
