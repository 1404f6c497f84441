#include "vx/math/detail/LimbsModular.h"

#include "vx/math/detail/LimbsVector.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace vx::math::detail {

namespace {

/// Several steps of Euclid's algorithm, derived from the leading bits: (x, y) becomes (ax + by, cx + dy).
struct Steps {
    std::int64_t a = 1;
    std::int64_t b = 0;
    std::int64_t c = 0;
    std::int64_t d = 1;
};

constexpr int LEADING_BITS = 62; // so that no sum of a leading part and a factor overflows

/// The bits of `value` from `shift` on, of which there are no more than LEADING_BITS.
std::int64_t leadingBits(Natural value, Size shift) noexcept
{
    const Size limb = shift / LIMB_BITS;
    const auto bit = static_cast<int>(shift % LIMB_BITS);
    if (limb >= value.size())
        return 0;
    const Limb above = limb + 1 < value.size() ? value[limb + 1] : 0;
    return static_cast<std::int64_t>(wide(above, value[limb]) >> bit);
}

Size bitCount(Natural value) noexcept
{
    return value.size() * LIMB_BITS - static_cast<Size>(std::countl_zero(value.back()));
}

/// As many steps as the leading bits alone decide: D. E. Knuth, "The Art of Computer Programming", volume 2, 4.5.2,
/// algorithm L (Lehmer).
Steps gatherSteps(std::int64_t left, std::int64_t right) noexcept
{
    Steps steps;
    while (right + steps.c != 0 && right + steps.d != 0) {
        const std::int64_t quotient = (left + steps.a) / (right + steps.c);
        if (quotient != (left + steps.b) / (right + steps.d))
            break;
        steps.a = std::exchange(steps.c, steps.a - quotient * steps.c);
        steps.b = std::exchange(steps.d, steps.b - quotient * steps.d);
        left = std::exchange(right, left - quotient * right);
    }
    return steps;
}

/// target[count] = left * a + right * b, where one factor is not above 0 and the sum fits.
void combine(Limb* target, Size count, Natural left, std::int64_t a, Natural right, std::int64_t b) noexcept
{
    if (b > 0) {
        std::swap(left, right);
        std::swap(a, b);
    }
    const Limb above = multiplyByLimb(target, left, static_cast<Limb>(a));
    if (left.size() < count) {
        target[left.size()] = above;
        std::fill(target + left.size() + 1, target + count, 0);
    }
    const Limb missing = subtractProduct(target, right, Limb {0} - static_cast<Limb>(b));
    if (const Size rest = count - right.size(); rest > 0)
        subtract(target + right.size(), {target + right.size(), rest}, {&missing, 1});
}

/// Products of numbers of one length, modulo an odd number, in the form x * B^length: P. L. Montgomery, "Modular
/// Multiplication Without Trial Division", Mathematics of Computation 44 (1985).
class MontgomeryReducer {
public:
    explicit MontgomeryReducer(Natural modulus)
        : m_modulus(modulus)
        , m_negatedInverse(Limb {0} - inverseOf(modulus[0]))
        , m_product(2 * modulus.size())
    {
    }

    Size width() const noexcept { return m_modulus.size(); }
    void enter(Limb* target, const Limb* value)
    {
        const Size size = m_modulus.size();
        Scratch scratch(3 * size + 1);
        Limb* const shifted = scratch.get();
        std::fill_n(shifted, size, 0);
        std::copy_n(value, size, shifted + size);
        divide(shifted + 2 * size, target, {shifted, 2 * size}, m_modulus);
    }
    void leave(Limb* value, const Limb* source)
    {
        Limb* const product = m_product.get();
        std::copy_n(source, m_modulus.size(), product);
        std::fill_n(product + m_modulus.size(), m_modulus.size(), 0);
        reduce(value);
    }
    void multiply(Limb* target, const Limb* left, const Limb* right)
    {
        detail::multiply(m_product.get(), {left, m_modulus.size()}, {right, m_modulus.size()});
        reduce(target);
    }

private:
    void reduce(Limb* target) noexcept
    {
        const Size size = m_modulus.size();
        Limb* const product = m_product.get();
        const Limb carry = addMultiple(product, m_modulus, m_negatedInverse);
        std::copy_n(product + size, size, target);
        if (carry != 0 || compare(target, m_modulus.data(), size) >= 0)
            subtract(target, {target, size}, m_modulus);
    }

    Natural m_modulus;
    Limb m_negatedInverse;
    Scratch m_product;
};

/// Products of numbers of one length, modulo any number.
class DivisionReducer {
public:
    explicit DivisionReducer(Natural modulus)
        : m_modulus(modulus)
        , m_product(3 * modulus.size() + 1)
    {
    }

    Size width() const noexcept { return m_modulus.size(); }
    void enter(Limb* target, const Limb* value) const noexcept { std::copy_n(value, width(), target); }
    void leave(Limb* value, const Limb* source) const noexcept { std::copy_n(source, width(), value); }
    void multiply(Limb* target, const Limb* left, const Limb* right)
    {
        const Size size = m_modulus.size();
        Limb* const product = m_product.get();
        detail::multiply(product, {left, size}, {right, size});
        divide(product + 2 * size, target, {product, 2 * size}, m_modulus);
    }

private:
    Natural m_modulus;
    Scratch m_product;
};

#if VX_ROW_PATHS
/// From this number of words on, reducing with vectors is faster; measured.
constexpr Size VECTORS_MODULUS = 3;
#endif

/// The most bits of the exponent that one multiplication covers.
int windowFor(Size exponentBits) noexcept
{
    return exponentBits < 24 ? 1 : exponentBits < 128 ? 3 : exponentBits < 512 ? 4 : 5;
}

/// Sliding-window exponentiation from the top bit, with a table of the odd powers.
template <class Reducer>
void powerByWindow(Limb* result, Natural exponent, Reducer reducer)
{
    const auto bit = [&](Size number) { return exponent[number / LIMB_BITS] >> number % LIMB_BITS & 1; };
    Size done = bitCount(exponent);
    const auto window = static_cast<Size>(windowFor(done));

    const Size width = reducer.width();
    std::vector<Limb> numbers((width << (window - 1)) + width);
    Limb* const value = numbers.data();
    const auto power = [&](Size number) { return value + (number / 2 + 1) * width; };
    reducer.enter(power(1), result);
    if (window > 1)
        reducer.multiply(value, power(1), power(1));
    for (Size number = 3; number >> window == 0; number += 2)
        reducer.multiply(power(number), power(number - 2), value);

    for (bool isStarted = false; done > 0;) {
        if (bit(done - 1) == 0) {
            reducer.multiply(value, value, value);
            --done;
            continue;
        }
        Size low = done - std::min(done, window);
        while (bit(low) == 0)
            ++low;
        Size number = 0;
        for (; done > low; --done) {
            number = number << 1 | bit(done - 1);
            if (isStarted)
                reducer.multiply(value, value, value);
        }
        if (isStarted)
            reducer.multiply(value, value, power(number));
        else
            std::copy_n(power(number), width, value);
        isStarted = true;
    }
    reducer.leave(result, value);
}

} // namespace

Size greatestCommonDivisor(Limb* target, Natural left, Natural right)
{
    if (compare(left, right) < 0)
        std::swap(left, right);
    const Size room = left.size();
    Scratch scratch(4 * room);
    Limb* x = scratch.get();
    Limb* y = x + room;
    Limb* newX = y + room;
    Limb* newY = newX + room;
    std::copy(left.begin(), left.end(), x);
    std::copy(right.begin(), right.end(), y);
    Size xCount = left.size();
    Size yCount = right.size();

    while (yCount > 1) {
        left = {x, xCount};
        right = {y, yCount};
        const Size shift = bitCount(left) - LEADING_BITS;
        const Steps steps = gatherSteps(leadingBits(left, shift), leadingBits(right, shift));
        if (steps.b == 0) { // the leading bits decide nothing
            divide(newX, newY, left, right);
            std::swap(x, y);
            std::swap(y, newY);
            xCount = yCount;
        } else {
            combine(newX, xCount, left, steps.a, right, steps.b);
            combine(newY, xCount, left, steps.c, right, steps.d);
            std::swap(x, newX);
            std::swap(y, newY);
        }
        yCount = trimmed(y, xCount);
        xCount = trimmed(x, xCount);
    }
    if (yCount == 1) {
        x[0] = std::gcd(y[0], LimbDivisor(y[0]).divide(newX, {x, xCount}));
        xCount = 1;
    }
    std::copy_n(x, xCount, target);
    return xCount;
}

void powerModulo(Limb* target, Natural base, Natural exponent, Natural modulus)
{
    const Size size = modulus.size();
    std::fill_n(target, size, 0);
    if (compare(base, modulus) < 0) {
        std::copy(base.begin(), base.end(), target);
    } else {
        Scratch quotient(base.size() - size + 1);
        divide(quotient.get(), target, base, modulus);
    }
    if ((modulus[0] & 1) == 0)
        return powerByWindow(target, exponent, DivisionReducer(modulus));
#if VX_ROW_PATHS
    if (size >= VECTORS_MODULUS && size <= VectorReducer::MOST_LIMBS && hasVectors())
        return powerByWindow(target, exponent, VectorReducer(modulus));
#endif
    powerByWindow(target, exponent, MontgomeryReducer(modulus));
}

} // namespace vx::math::detail
