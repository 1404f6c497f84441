#include "vx/math/detail/Limbs.h"
#include "vx/math/detail/LimbsRow.h"
#include "vx/math/detail/LimbsTransform.h"
#include "vx/math/detail/LimbsVector.h"

#include <algorithm>
#include <utility>

namespace vx::math::detail {

namespace {

/// From which numbers of words on splitting in halves, in thirds, in quarters, and then transforms are faster; measured.
struct Thresholds {
    Size halvesMultiply;
    Size halvesSquare;
    Size thirds;
    Size quarters;
    Size transform;
    Size school; ///< the most words that are multiplied at once without splitting
};

constexpr Thresholds USUAL {32, 50, 140, 360, 4700, ~Size {0}};

#if VX_ROW_PATHS

constexpr Thresholds WITH_VECTORS {220, 400, 850, 850, 850, MOST_VECTOR_LIMBS};
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

/// From |x| and |y|, where y has a sign: |y| becomes half of x - y, and x half of x + y. Both fit.
void toHalves(Limb* x, Limb* y, Size count, bool isNegative) noexcept
{
    subtract(y, {x, count}, {y, count});
    shiftRight(y, {y, count}, 1);
    subtract(x, {x, count}, {y, count});
    if (isNegative)
        std::swap_ranges(x, x + count, y);
}

/// What `multiplySame` needs: less than four words for each of the operand's, and some for each level.
constexpr Size scratchFor(Size count) noexcept
{
    return 4 * count + 4 * LIMB_BITS;
}

void multiplySame(Limb* target, const Limb* left, const Limb* right, Size count, Limb* scratch) noexcept;

/// Adds a coefficient to a product of `count` words. The sum fits: what lies above the product's end is 0.
void addAt(Limb* target, Size count, Size place, const Limb* number, Size words) noexcept
{
    const Size room = count - place;
    add(target + place, {target + place, room}, {number, std::min(words, room)});
}

/// number -= less * factor, where the difference is not below 0.
void subtractMultiple(Limb* number, Size count, Natural less, Limb factor) noexcept
{
    const Limb borrow = subtractProduct(number, less, factor);
    subtract(number + less.size(), {number + less.size(), count - less.size()}, {&borrow, less.size() < count});
}

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

/// Divides a multiple of a divisor of B - 1 for B = 2^64. Multiplied by (B - 1) / divisor, it is B - 1 times the quotient,
/// from which each word of the quotient follows by a subtraction.
template <Limb DIVISOR>
void divideMultiple(Limb* number, Size count) noexcept
{
    constexpr Limb FACTOR = ~Limb {0} / DIVISOR;
    static_assert(~Limb {0} % DIVISOR == 0);
    Limb carry = 0;
    Limb quotient = 0;
    Limb borrow = 0;
    for (Size place = 0; place < count; ++place) {
        const Wide product = static_cast<Wide>(number[place]) * FACTOR + carry;
        carry = high(product);
        const Wide difference = static_cast<Wide>(quotient) - static_cast<Limb>(product) - borrow;
        number[place] = quotient = static_cast<Limb>(difference);
        borrow = high(difference) & 1;
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
    toHalves(one, minusOne, width, isNegative);
    Limb* const second = one;
    Limb* const first = minusOne; // still with the third one
    subtractFrom(second, lowest);
    subtractFrom(second, highest);
    subtractFrom(two, lowest);
    subtractMultiple(two, width, {second, width}, 4);
    subtractMultiple(two, width, highest, 16);
    shiftRight(two, {two, width}, 1);
    subtractFrom(two, {first, width});
    divideMultiple<3>(two, width);
    Limb* const third = two;
    subtractFrom(first, {third, width});

    std::copy_n(second, 2 * size, target + 2 * size);
    addAt(target, 2 * count, 4 * size, second + 2 * size, width - 2 * size);
    addAt(target, 2 * count, size, first, width);
    addAt(target, 2 * count, 3 * size, third, width);
}

/// A number in four parts: x3 * B^3 + x2 * B^2 + x1 * B + x0 for B of `size` words.
struct Quarters {
    Quarters(const Limb* words, Size count, Size size) noexcept
        : x0(words, size)
        , x1(words + size, size)
        , x2(words + 2 * size, size)
        , x3(words + 3 * size, count - 3 * size)
    {
    }

    /// The values for B = 2^power and B = -2^power, and room for one more, all of `size` + 1 words. True if the second one
    /// is negative: it is stored without its sign.
    bool valuesAt(int power, Limb* plus, Limb* minus, Limb* odd) const noexcept
    {
        const Size size = x0.size();
        const Size length = size + 1;
        minus[size] = shiftLeft(minus, x2, 2 * power);
        add(minus, {minus, length}, x0);
        odd[x3.size()] = shiftLeft(odd, x3, 2 * power);
        std::fill(odd + x3.size() + 1, odd + length, 0);
        add(odd, {odd, length}, x1);
        shiftLeft(odd, {odd, length}, power);
        add(plus, {minus, length}, {odd, length});
        return distance(minus, {minus, length}, {odd, length});
    }
    /// The value for B = 1/2, times 8.
    void valueAtHalf(Limb* half) const noexcept
    {
        const Natural all(half, x0.size() + 1);
        half[x0.size()] = shiftLeft(half, x0, 1);
        for (const Natural part : {x1, x2}) {
            add(half, all, part);
            shiftLeft(half, all, 1);
        }
        add(half, all, x3);
    }

    Natural x0;
    Natural x1;
    Natural x2;
    Natural x3;
};

/// target[2 * count] = left * right by quarters, as by thirds: the product has seven coefficients c0 to c6, which follow
/// from its values for B = 0, 1, -1, 2, -2 and 1/2 and from the product of the upper parts.
void multiplyByQuarters(Limb* target, const Limb* left, const Limb* right, Size count, Limb* scratch) noexcept
{
    const Size size = (count + 3) / 4;
    const Size length = size + 1;
    const Size width = 2 * length;
    const Quarters x(left, count, size);
    const Quarters y(right, count, size);
    const bool isSquare = left == right;
    const Size other = isSquare ? 0 : length; // where the value of the other number is
    Limb* values[5]; // for 1, -1, 2, -2 and 1/2
    for (Limb*& value : values) {
        value = scratch;
        scratch += width;
    }
    const auto [atOne, atMinusOne, atTwo, atMinusTwo, atHalf] = values;

    for (const int power : {0, 1}) {
        Limb* const minus = target + 2 * length;
        Limb* const room = target + 4 * length;
        bool isNegative = x.valuesAt(power, target, minus, room);
        isNegative = isSquare ? false : isNegative != y.valuesAt(power, target + other, minus + other, room);
        Limb* const even = values[2 * power];
        Limb* const odd = values[2 * power + 1];
        multiplySame(even, target, target + other, length, scratch);
        multiplySame(odd, minus, minus + other, length, scratch);
        toHalves(even, odd, width, isNegative);
    }
    x.valueAtHalf(target);
    if (!isSquare)
        y.valueAtHalf(target + other);
    multiplySame(atHalf, target, target + other, length, scratch);
    multiplySame(target, left, right, size, scratch);
    const Natural c0(target, 2 * size);
    const Natural c6(target + 6 * size, 2 * x.x3.size());
    multiplySame(target + 6 * size, x.x3.data(), y.x3.data(), x.x3.size(), scratch);

    const auto subtractFrom
        = [width](Limb* number, Natural less, Limb factor) { subtractMultiple(number, width, less, factor); };
    const auto minus = [width](Limb* number, const Limb* less) { subtract(number, {number, width}, {less, width}); };
    // The even coefficients: c2 + c4, and c2 + 4 c4.
    Limb* const c2 = atOne;
    Limb* const c4 = atTwo;
    subtract(c2, {c2, width}, c0);
    subtract(c2, {c2, width}, c6);
    subtract(c4, {c4, width}, c0);
    subtractFrom(c4, c6, 64);
    shiftRight(c4, {c4, width}, 2);
    minus(c4, c2);
    divideMultiple<3>(c4, width);
    minus(c2, c4);
    // The odd ones: c1 + c3 + c5, c1 + 4 c3 + 16 c5, and 16 c1 + 4 c3 + c5. The last two become c3 + 5 c5 and 5 c1 + c3.
    Limb* const c3 = atMinusOne;
    Limb* const c5 = atMinusTwo;
    Limb* const c1 = atHalf;
    shiftRight(c5, {c5, width}, 1);
    subtractFrom(c1, c0, 64);
    subtractFrom(c1, {c2, width}, 16);
    subtractFrom(c1, {c4, width}, 4);
    subtract(c1, {c1, width}, c6);
    shiftRight(c1, {c1, width}, 1);
    for (Limb* const number : {c5, c1}) {
        minus(number, c3);
        divideMultiple<3>(number, width);
    }
    multiplyByLimb(c3, {c3, width}, 5);
    minus(c3, c1);
    minus(c3, c5);
    divideMultiple<3>(c3, width);
    for (Limb* const number : {c5, c1}) {
        minus(number, c3);
        divideMultiple<5>(number, width);
    }

    std::copy_n(c2, 2 * size, target + 2 * size);
    std::copy_n(c4, 2 * size, target + 4 * size);
    addAt(target, 2 * count, 4 * size, c2 + 2 * size, width - 2 * size);
    addAt(target, 2 * count, 6 * size, c4 + 2 * size, width - 2 * size);
    addAt(target, 2 * count, size, c1, width);
    addAt(target, 2 * count, 3 * size, c3, width);
    addAt(target, 2 * count, 5 * size, c5, width);
}

/// target[2 * count] = left * right for numbers of one length. Above a threshold by halves after Karatsuba:
/// with x = x1 * B + x0, x * y = x1y1 * B^2 + (x1y1 + x0y0 - (x0 - x1)(y0 - y1)) * B + x0y0.
void multiplySame(Limb* target, const Limb* left, const Limb* right, Size count, Limb* scratch) noexcept
{
    const bool isSquare = left == right;
    if (count < (isSquare ? thresholds().halvesSquare : thresholds().halvesMultiply))
        return isSquare ? squareSchool(target, {left, count}) : multiplySchool(target, {left, count}, {right, count});

    if (count >= thresholds().quarters)
        return multiplyByQuarters(target, left, right, count, scratch);
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
    addAt(target, 2 * count, half, middle, 2 * half + 1);
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
    // The time of a transform depends on both lengths together. A short number is better multiplied in pieces.
    if (left.size() + count >= 2 * limits.transform && 5 * count >= 2 * limits.transform)
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
