#include "vx/math/detail/Limbs.h"
#include "vx/math/detail/LimbsRow.h"
#include "vx/math/detail/LimbsTransform.h"
#include "vx/math/detail/LimbsVector.h"

#include <algorithm>
#include <utility>

namespace vx::math::detail {

namespace {

/// From which numbers of words on splitting in halves, then in thirds, and then transforms are faster; measured.
struct Thresholds {
    Size halvesMultiply;
    Size halvesSquare;
    Size thirds;
    Size transform;
    Size school; ///< the most words that are multiplied at once without splitting
};

constexpr Thresholds USUAL {40, 56, 140, 2200, ~Size {0}};

#if VX_ROW_PATHS

constexpr Thresholds WITH_VECTORS {220, 400, 850, 850, MOST_VECTOR_LIMBS};
constexpr Size VECTORS_MULTIPLY = 11;
constexpr Size VECTORS_SQUARE = 48;

static_assert(std::max(WITH_VECTORS.halvesMultiply, WITH_VECTORS.halvesSquare) <= WITH_VECTORS.school);

const Thresholds& thresholds() noexcept
{
    return hasVectors() ? WITH_VECTORS : USUAL;
}

#else

constexpr const Thresholds& thresholds() noexcept
{
    return USUAL;
}

#endif

/// The sum of the products that make one word of a result. Three words are enough for any number of them that fits in
/// memory.
class Column {
public:
    void add(Limb left, Limb right) noexcept { add(static_cast<Wide>(left) * right); }
    void add(Wide value) noexcept
    {
        m_sum += value;
        m_above += m_sum < value;
    }
    void twice() noexcept
    {
        m_above = m_above << 1 | high(m_sum) >> (LIMB_BITS - 1);
        m_sum <<= 1;
    }
    void add(const Column& other) noexcept
    {
        add(other.m_sum);
        m_above += other.m_above;
    }
    Limb low() const noexcept { return static_cast<Limb>(m_sum); }
    /// Returns the word and keeps the carry for the words above.
    Limb next() noexcept
    {
        const auto word = static_cast<Limb>(m_sum);
        m_sum = wide(m_above, high(m_sum));
        m_above = 0;
        return word;
    }

private:
    Wide m_sum = 0;
    Limb m_above = 0;
};

/// Column by column, which keeps sums in registers where rows would load and store them, unless the processor has fast
/// rows.
void multiplySchool(Limb* target, Natural left, Natural right) noexcept
{
#if VX_ROW_PATHS
    if (right.size() >= VECTORS_MULTIPLY && hasVectors())
        return multiplyByVectors(target, left, right);
    if (hasRows())
        return multiplyByRows(target, left, right);
#endif
    Column column;
    const Size last = left.size() + right.size() - 1;
    for (Size place = 0; place < last; ++place) {
        const Size from = place < right.size() ? 0 : place - right.size() + 1;
        const Size to = std::min(place + 1, left.size());
        const Limb* up = left.data() + from;
        const Limb* down = right.data() + (place - from);
        for (Size count = to - from; count > 0; --count)
            column.add(*up++, *down--);
        target[place] = column.next();
    }
    target[last] = column.next();
}

/// Products of different words occur twice in a square.
void squareSchool(Limb* target, Natural source) noexcept
{
#if VX_ROW_PATHS
    if (source.size() >= VECTORS_MULTIPLY && hasVectors())
        return source.size() >= VECTORS_SQUARE ? squareByVectors(target, source)
                                               : multiplyByVectors(target, source, source);
    if (hasRows())
        return squareByRows(target, source);
#endif
    Column column;
    const Size last = 2 * source.size() - 1;
    for (Size place = 0; place < last; ++place) {
        const Size from = place < source.size() ? 0 : place - source.size() + 1;
        const Limb* up = source.data() + from;
        const Limb* down = source.data() + (place - from);
        Column pairs;
        for (; up < down; ++up, --down)
            pairs.add(*up, *down);
        pairs.twice();
        if (up == down)
            pairs.add(*up, *up);
        column.add(pairs);
        target[place] = column.next();
    }
    target[last] = column.next();
}

/// target[left] = |left - right|, with no more words in `right`. True if the difference is negative.
bool distance(Limb* target, Natural left, Natural right) noexcept
{
    const Size common = right.size();
    const bool isLess
        = trimmed(left.data() + common, left.size() - common) == 0 && compare(left.data(), right.data(), common) < 0;
    if (!isLess) {
        subtract(target, left, right);
        return false;
    }
    subtract(target, right, left.first(common));
    std::fill(target + common, target + left.size(), 0);
    return true;
}

/// What `multiplySame` needs: at most three words for each of the operand's, and some for each level.
constexpr Size scratchFor(Size count) noexcept
{
    return 3 * count + 3 * LIMB_BITS;
}

void multiplySame(Limb* target, const Limb* left, const Limb* right, Size count, Limb* scratch) noexcept;

/// A number in three parts: x2 * B^2 + x1 * B + x0 for B of `size` words.
struct Thirds {
    Thirds(const Limb* words, Size count, Size size) noexcept
        : x0(words, size)
        , x1(words + size, size)
        , x2(words + 2 * size, count - 2 * size)
    {
    }

    /// The values for B = 1 and B = -1, of `size` + 1 words. True if the second one is negative: it is stored without
    /// its sign.
    bool valuesAtOne(Limb* one, Limb* minusOne) const noexcept
    {
        const Size size = x0.size();
        minusOne[size] = add(minusOne, x0, x2);
        one[size] = minusOne[size] + add(one, {minusOne, size}, x1);
        return distance(minusOne, {minusOne, size + 1}, x1);
    }
    void valueAtTwo(Limb* two) const noexcept
    {
        const Natural all(two, x0.size() + 1);
        two[x2.size()] = shiftLeft(two, x2, 1);
        std::fill(two + x2.size() + 1, two + all.size(), 0);
        add(two, all, x1);
        shiftLeft(two, all, 1);
        add(two, all, x0);
    }

    Natural x0;
    Natural x1;
    Natural x2;
};

/// Divides a multiple of 3, from the lowest word on.
void divideByThree(Limb* number, Size count) noexcept
{
    constexpr Limb INVERSE = 0xAAAA'AAAA'AAAA'AAAB;
    Limb borrow = 0;
    for (Size place = 0; place < count; ++place) {
        const Limb word = number[place];
        number[place] = (word - borrow) * INVERSE;
        borrow = (word < borrow) + high(static_cast<Wide>(number[place]) * 3);
    }
}

/// target[2 * count] = left * right by thirds: the product, a polynomial in B, has five coefficients, which follow from
/// its values for B = 0, 1, -1 and 2 and from the product of the upper parts. A. L. Toom, 1963.
void multiplyByThirds(Limb* target, const Limb* left, const Limb* right, Size count, Limb* scratch) noexcept
{
    const Size size = (count + 2) / 3;
    const Size length = size + 1;
    const Size width = 2 * length;
    const Thirds x(left, count, size);
    const Thirds y(right, count, size);
    Limb* const one = scratch;
    Limb* const minusOne = one + width;
    Limb* const two = minusOne + width;
    scratch = two + width;

    const bool isSquare = left == right;
    const Size other = isSquare ? 0 : length; // where the value of the other number is
    Limb* const xMinus = target + 2 * length;
    bool isNegative = x.valuesAtOne(target, xMinus);
    isNegative = isSquare ? false : isNegative != y.valuesAtOne(target + other, xMinus + other);
    multiplySame(one, target, target + other, length, scratch);
    multiplySame(minusOne, xMinus, xMinus + other, length, scratch);
    x.valueAtTwo(target);
    if (!isSquare)
        y.valueAtTwo(target + other);
    multiplySame(two, target, target + other, length, scratch);
    multiplySame(target, left, right, size, scratch);
    const Natural lowest(target, 2 * size);
    const Natural highest(target + 4 * size, 2 * x.x2.size());
    multiplySame(target + 4 * size, x.x2.data(), y.x2.data(), x.x2.size(), scratch);

    const auto subtractFrom = [width](Limb* number, Natural less) { subtract(number, {number, width}, less); };
    // Half the difference and half the sum of the values for 1 and -1, less the sign.
    subtract(minusOne, {one, width}, {minusOne, width});
    shiftRight(minusOne, {minusOne, width}, 1);
    subtractFrom(one, {minusOne, width});
    Limb* const second = isNegative ? minusOne : one;
    Limb* const first = isNegative ? one : minusOne; // still with the third one
    subtractFrom(second, lowest);
    subtractFrom(second, highest);
    subtractFrom(two, lowest);
    subtractProduct(two, {second, width}, 4);
    const Limb borrow = subtractProduct(two, highest, 16);
    subtract(two + highest.size(), {two + highest.size(), width - highest.size()}, {&borrow, 1});
    shiftRight(two, {two, width}, 1);
    subtractFrom(two, {first, width});
    divideByThree(two, width);
    Limb* const third = two;
    subtractFrom(first, {third, width});

    // The sums fit: what lies above the target's end is 0.
    std::copy_n(second, 2 * size, target + 2 * size);
    const auto addAt = [&](Size place, const Limb* number, Size words) {
        const Size room = 2 * count - place;
        add(target + place, {target + place, room}, {number, std::min(words, room)});
    };
    addAt(4 * size, second + 2 * size, width - 2 * size);
    addAt(size, first, width);
    addAt(3 * size, third, width);
}

/// target[2 * count] = left * right for numbers of one length. Above a threshold by halves after Karatsuba:
/// with x = x1 * B + x0, x * y = x1y1 * B^2 + (x1y1 + x0y0 - (x0 - x1)(y0 - y1)) * B + x0y0.
void multiplySame(Limb* target, const Limb* left, const Limb* right, Size count, Limb* scratch) noexcept
{
    const bool isSquare = left == right;
    if (count < (isSquare ? thresholds().halvesSquare : thresholds().halvesMultiply))
        return isSquare ? squareSchool(target, {left, count}) : multiplySchool(target, {left, count}, {right, count});

    if (count >= thresholds().thirds)
        return multiplyByThirds(target, left, right, count, scratch);

    const Size half = (count + 1) / 2;
    const Size rest = count - half;

    Limb* const leftDistance = target;
    Limb* rightDistance = target;
    bool isNegative = distance(leftDistance, {left, half}, {left + half, rest});
    if (isSquare) {
        isNegative = false;
    } else {
        rightDistance = target + half;
        isNegative ^= distance(rightDistance, {right, half}, {right + half, rest});
    }
    Limb* const cross = scratch;
    multiplySame(cross, leftDistance, rightDistance, half, scratch + 2 * half);

    multiplySame(target, left, right, half, scratch + 2 * half);
    multiplySame(target + 2 * half, left + half, right + half, rest, scratch + 2 * half);

    const Natural low(target, 2 * half);
    const Natural top(target + 2 * half, 2 * rest);
    Limb* const middle = scratch + 2 * half;
    Limb above = add(middle, low, top);
    above = isNegative ? above + add(middle, {middle, 2 * half}, {cross, 2 * half})
                       : above - subtract(middle, {middle, 2 * half}, {cross, 2 * half});
    middle[2 * half] = above;
    // The sum fits: what lies above the target's end is 0.
    const Size room = 2 * count - half;
    add(target + half, {target + half, room}, {middle, std::min(2 * half + 1, room)});
}

} // namespace

Limb addMultiple(Limb* product, Natural modulus, Limb negatedInverse) noexcept
{
#if VX_ROW_PATHS
    if (hasRows())
        return addMultipleByRows(product, modulus, negatedInverse);
#endif
    const Size size = modulus.size();
    Column column;
    const auto addProducts = [&](Size from, Size to, Size place) {
        const Limb* up = product + from;
        const Limb* down = modulus.data() + (place - from);
        for (Size count = to - from; count > 0; --count)
            column.add(*up++, *down--);
        column.add(product[place]);
    };
    for (Size place = 0; place < size; ++place) {
        addProducts(0, place, place);
        product[place] = column.low() * negatedInverse; // the factor that makes this column 0
        column.add(product[place], modulus[0]);
        column.next();
    }
    for (Size place = size; place < 2 * size; ++place) {
        addProducts(place - size + 1, size, place);
        product[place] = column.next();
    }
    return column.low();
}

void multiply(Limb* target, Natural left, Natural right)
{
    if (left.size() < right.size())
        std::swap(left, right);
    const Size count = right.size();
    if (count == 0) {
        std::fill_n(target, left.size(), 0);
        return;
    }
    const Thresholds& limits = thresholds();
    if (left.data() == right.data() && left.size() == count && count < limits.halvesSquare)
        return squareSchool(target, left);
    if (count < limits.halvesMultiply && left.size() <= limits.school)
        return multiplySchool(target, left, right);
    if (count >= limits.transform)
        return multiplyByTransform(target, left, right);

    // The longer one in pieces, of the shorter one's length if that is split, too.
    const Size piece = count < limits.halvesMultiply ? limits.school : count;
    Scratch scratch(scratchFor(count) + count);
    Limb* const below = scratch.get() + scratchFor(count); // the upper words of the product before
    for (Size done = 0; done < left.size(); done += piece) {
        const Natural part = left.subspan(done, std::min(piece, left.size() - done));
        Limb* const product = target + done;
        if (done > 0)
            std::copy_n(product, count, below);
        if (part.size() == count)
            multiplySame(product, part.data(), right.data(), count, scratch.get());
        else
            multiply(product, part, right);
        if (done > 0)
            add(product, {product, part.size() + count}, {below, count});
    }
}

} // namespace vx::math::detail
