#include "vx/math/detail/Limbs.h"

#include "vx/math/detail/LimbsRow.h"

namespace vx::math::detail {

int compare(const Limb* left, const Limb* right, Size count) noexcept
{
    while (count-- > 0) {
        if (left[count] != right[count])
            return left[count] < right[count] ? -1 : 1;
    }
    return 0;
}

int compare(Natural left, Natural right) noexcept
{
    if (left.size() != right.size())
        return left.size() < right.size() ? -1 : 1;
    return compare(left.data(), right.data(), left.size());
}

Limb add(Limb* target, Natural left, Natural right) noexcept
{
#if VX_ROW_PATHS
    Limb carry = addWords(target, left.data(), right.data(), right.size());
    Size i = right.size();
#else
    Limb carry = 0;
    Size i = 0;
    for (; i < right.size(); ++i) {
        const Wide sum = static_cast<Wide>(left[i]) + right[i] + carry;
        target[i] = static_cast<Limb>(sum);
        carry = high(sum);
    }
#endif
    if (carry == 0 && target == left.data())
        return 0;
    for (; i < left.size(); ++i) {
        const Limb sum = left[i] + carry;
        carry = sum < carry;
        target[i] = sum;
    }
    return carry;
}

Limb subtract(Limb* target, Natural left, Natural right) noexcept
{
#if VX_ROW_PATHS
    Limb borrow = subtractWords(target, left.data(), right.data(), right.size());
    Size i = right.size();
#else
    Limb borrow = 0;
    Size i = 0;
    for (; i < right.size(); ++i) {
        const Wide difference = static_cast<Wide>(left[i]) - right[i] - borrow;
        target[i] = static_cast<Limb>(difference);
        borrow = high(difference) & 1;
    }
#endif
    if (borrow == 0 && target == left.data())
        return 0;
    for (; i < left.size(); ++i) {
        const Limb value = left[i];
        target[i] = value - borrow;
        borrow = value < borrow;
    }
    return borrow;
}

Limb multiplyByLimb(Limb* target, Natural source, Limb factor, Limb addend) noexcept
{
    for (Size i = 0; i < source.size(); ++i) {
        const Wide product = static_cast<Wide>(source[i]) * factor + addend;
        target[i] = static_cast<Limb>(product);
        addend = high(product);
    }
    return addend;
}

Limb subtractProduct(Limb* target, Natural source, Limb factor) noexcept
{
#if VX_ROW_PATHS
    if (hasRows())
        return subtractProductByRows(target, source, factor);
#endif
    Limb borrow = 0;
    for (Size i = 0; i < source.size(); ++i) {
        const Wide product = static_cast<Wide>(source[i]) * factor + borrow;
        const Limb value = target[i];
        target[i] = value - static_cast<Limb>(product);
        borrow = high(product) + (value < static_cast<Limb>(product));
    }
    return borrow;
}

Limb shiftLeft(Limb* target, Natural source, int bits) noexcept
{
    const Size count = source.size();
    if (count == 0)
        return 0;
    // In two steps, because a shift by the whole width is undefined.
    const auto spill = [&](Limb value) { return value >> 1 >> (LIMB_BITS - 1 - bits); };
    const Limb above = spill(source[count - 1]);
    for (Size i = count - 1; i > 0; --i)
        target[i] = source[i] << bits | spill(source[i - 1]);
    target[0] = source[0] << bits;
    return above;
}

void shiftRight(Limb* target, Natural source, int bits) noexcept
{
    const Size count = source.size();
    if (count == 0)
        return;
    for (Size i = 0; i + 1 < count; ++i)
        target[i] = source[i] >> bits | source[i + 1] << 1 << (LIMB_BITS - 1 - bits);
    target[count - 1] = source[count - 1] >> bits;
}

} // namespace vx::math::detail
