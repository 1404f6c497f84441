#include "vx/math/detail/LimbsText.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace vx::math::detail {

namespace {

// From this number of words on, converting by halves is faster; measured.
constexpr Size SPLIT_FROM_DIGITS = 54;
constexpr Size SPLIT_TO_DIGITS = 15;

/// A radix whose digits are as many digits as fit in one word.
struct WordRadix {
    int digits;
    Limb value; ///< 0 for 2 to the power of 64
};

constexpr int LARGEST_RADIX = 36;

constexpr std::array<WordRadix, LARGEST_RADIX + 1> makeWordRadixes()
{
    std::array<WordRadix, LARGEST_RADIX + 1> table {};
    for (Limb radix = 2; radix <= LARGEST_RADIX; ++radix) {
        WordRadix& row = table[radix];
        row = {1, radix};
        while (row.value <= ~Limb {0} / radix) {
            row.value *= radix;
            ++row.digits;
        }
    }
    return table;
}

constexpr std::array<WordRadix, LARGEST_RADIX + 1> WORD_RADIXES = makeWordRadixes();

constexpr bool isPowerOfTwo(int radix) noexcept
{
    return std::has_single_bit(static_cast<unsigned int>(radix));
}

constexpr int bitsOf(int radix) noexcept
{
    return static_cast<int>(std::bit_width(static_cast<unsigned int>(radix))) - 1;
}

constexpr Size quotientUp(Size value, Size divisor) noexcept
{
    return value / divisor + (value % divisor != 0);
}

/// Where numbers of many digits of the word radix are split, and the powers of the radix that belong to those places:
/// in the middle, and again in the middle of the halves, down to the smallest size for which it is faster.
class Splits {
public:
    struct Split {
        Size low; ///< digits of the lower half
        vx::detail::RawArray<Limb> power;
        Size count;

        Natural value() const noexcept { return {power.get(), count}; }
    };

    Splits(Limb radix, Size digits, Size smallest)
    {
        std::vector<Size> places;
        while (digits > smallest)
            places.push_back(digits = quotientUp(digits, 2));
        m_splits.resize(places.size());
        for (Size level = places.size(); level-- > 0;) {
            Split& split = m_splits[level];
            split.low = places[level];
            if (level + 1 == places.size())
                start(split, radix);
            else
                square(split, m_splits[level + 1], radix);
        }
    }

    /// The split for a number of `digits` from `level` on; null if there is none.
    const Split* find(Size digits, Size* level) const noexcept
    {
        while (*level < m_splits.size() && m_splits[*level].low >= digits)
            ++*level;
        return *level < m_splits.size() ? &m_splits[*level] : nullptr;
    }

private:
    static void start(Split& split, Limb radix)
    {
        split.power = vx::detail::makeRawArray<Limb>(static_cast<std::int64_t>(split.low));
        split.power[0] = radix;
        split.count = 1;
        for (Size digit = 1; digit < split.low; ++digit) {
            const Limb above = multiplyByLimb(split.power.get(), split.value(), radix);
            split.power[split.count] = above;
            split.count += above != 0;
        }
    }

    static void square(Split& split, const Split& below, Limb radix)
    {
        split.count = 2 * below.count;
        split.power = vx::detail::makeRawArray<Limb>(static_cast<std::int64_t>(split.count));
        multiply(split.power.get(), below.value(), below.value());
        if (split.low < 2 * below.low)
            LimbDivisor(radix).divide(split.power.get(), split.value());
        split.count = trimmed(split.power.get(), split.count);
    }

    std::vector<Split> m_splits;
};

/// target[digits] = the value of `digits` in the word radix, the least significant first.
void fromWordDigits(Limb* target, Natural digits, Limb radix, const Splits& splits, Size level)
{
    const Splits::Split* split = splits.find(digits.size(), &level);
    if (split == nullptr) {
        for (Size done = 0; done < digits.size(); ++done)
            target[done] = multiplyByLimb(target, {target, done}, radix, digits[digits.size() - 1 - done]);
        return;
    }
    const Size above = digits.size() - split->low;
    Scratch scratch(digits.size());
    Limb* const upper = scratch.get();
    Limb* const lower = upper + above;
    fromWordDigits(upper, digits.subspan(split->low), radix, splits, level + 1);
    fromWordDigits(lower, digits.first(split->low), radix, splits, level + 1);
    multiply(target, {upper, above}, split->value());
    std::fill(target + above + split->count, target + digits.size(), 0);
    add(target, {target, digits.size()}, {lower, split->low});
}

/// digits[count] = the digits of a value in the word radix, the least significant first. Overwrites `value`.
void toWordDigits(
    Limb* digits, Size count, std::span<Limb> value, const LimbDivisor& radix, const Splits& splits, Size level)
{
    value = value.first(trimmed(value.data(), value.size()));
    const Splits::Split* split = splits.find(count, &level);
    if (split == nullptr) {
        for (Size place = 0; place < count; ++place) {
            digits[place] = radix.divide(value.data(), value);
            if (!value.empty() && value.back() == 0)
                value = value.first(value.size() - 1);
        }
        return;
    }
    const Size above = count - split->low;
    if (value.size() < split->count) {
        std::fill_n(digits + split->low, above, 0);
        return toWordDigits(digits, split->low, value, radix, splits, level + 1);
    }
    const Size upperCount = value.size() - split->count + 1;
    Scratch scratch(upperCount + split->count);
    Limb* const upper = scratch.get();
    Limb* const lower = upper + upperCount;
    divide(upper, lower, value, split->value());
    toWordDigits(digits + split->low, above, {upper, upperCount}, radix, splits, level + 1);
    toWordDigits(digits, split->low, {lower, split->count}, radix, splits, level + 1);
}

void fromBits(Limb* target, std::span<const unsigned char> digits, int bits) noexcept
{
    Wide pending = 0;
    int pendingBits = 0;
    for (Size place = digits.size(); place-- > 0;) {
        pending |= static_cast<Wide>(digits[place]) << pendingBits;
        pendingBits += bits;
        if (pendingBits >= LIMB_BITS) {
            *target++ = static_cast<Limb>(pending);
            pending >>= LIMB_BITS;
            pendingBits -= LIMB_BITS;
        }
    }
    if (pendingBits > 0)
        *target = static_cast<Limb>(pending);
}

/// The value of eight digits, the radix of which is not above 16: neighbours are joined in all lanes at once.
Limb eightDigits(const unsigned char* digits, Limb radix) noexcept
{
    Limb value = 0;
    std::memcpy(&value, digits, sizeof value);
    value = (value * (radix << 8 | 1)) >> 8 & 0x00FF00FF00FF00FF;
    radix *= radix;
    value = (value * (radix << 16 | 1)) >> 16 & 0x0000FFFF0000FFFF;
    radix *= radix;
    return (value * (radix << 32 | 1)) >> 32;
}

/// The value of digits that fit in one word.
Limb wordOf(std::span<const unsigned char> digits, Limb radix) noexcept
{
    Limb value = 0;
    if (radix <= 16) {
        const Limb power = radix * radix * radix * radix;
        for (; digits.size() >= sizeof(Limb); digits = digits.subspan(sizeof(Limb)))
            value = value * power * power + eightDigits(digits.data(), radix);
    }
    for (const unsigned char digit : digits)
        value = value * radix + digit;
    return value;
}

constexpr char DIGITS[] = "0123456789abcdefghijklmnopqrstuvwxyz";

std::string toBits(Natural value, int bits)
{
    const Size size = value.size() * LIMB_BITS - static_cast<Size>(std::countl_zero(value.back()));
    std::string text(quotientUp(size, static_cast<Size>(bits)), '0');
    Wide pending = 0;
    int pendingBits = 0;
    Size next = 0;
    for (Size place = text.size(); place-- > 0;) {
        if (pendingBits < bits && next < value.size()) {
            pending |= static_cast<Wide>(value[next++]) << pendingBits;
            pendingBits += LIMB_BITS;
        }
        text[place] = DIGITS[static_cast<unsigned int>(pending) & ((1U << bits) - 1)];
        pending >>= bits;
        pendingBits -= bits;
    }
    return text;
}

/// The decimal digits of a number of eight, as text: numbers of four digits become pairs and these become digits, in all
/// lanes at once. A lane's quotient is that of its number by a multiplication.
Limb eightCharacters(Limb number) noexcept
{
    const auto split = [](Limb lanes, Limb quotients, Limb divisor, int width) {
        return quotients | (lanes - quotients * divisor) << width;
    };
    constexpr Limb ZEROS = 0x3030303030303030;
    number = split(number, number / 10000, 10000, 32);
    number = split(number, number * 10486 >> 20 & 0x0000007F0000007F, 100, 16);
    number = split(number, number * 103 >> 10 & 0x000F000F000F000F, 10, 8);
    return number | ZEROS;
}

/// Writes the digits of a word of the word radix, which end at `end`.
void writeDecimalDigits(char* end, int, Limb word, int) noexcept
{
    constexpr Limb EIGHT = 100'000'000;
    const Limb upper = word / EIGHT;
    const Limb lanes[]
        = {eightCharacters(upper / EIGHT), eightCharacters(upper % EIGHT), eightCharacters(word % EIGHT)};
    constexpr Size COUNT = WORD_RADIXES[10].digits;
    std::memcpy(end - COUNT, reinterpret_cast<const char*>(lanes) + sizeof lanes - COUNT, COUNT);
}

void writeDigits(char* end, int count, Limb word, int radix) noexcept
{
    const auto divisor = static_cast<Limb>(radix);
    for (; count > 0; --count, word /= divisor)
        *--end = DIGITS[word % divisor];
}

} // namespace

Size limbsForDigits(Size digits, int radix) noexcept
{
    if (isPowerOfTwo(radix))
        return quotientUp(digits * static_cast<Size>(bitsOf(radix)), LIMB_BITS);
    return quotientUp(digits, static_cast<Size>(WORD_RADIXES[static_cast<Size>(radix)].digits));
}

void fromDigits(Limb* target, std::span<const unsigned char> digits, int radix)
{
    if (isPowerOfTwo(radix))
        return fromBits(target, digits, bitsOf(radix));

    const WordRadix& word = WORD_RADIXES[static_cast<Size>(radix)];
    const Size count = limbsForDigits(digits.size(), radix);
    Scratch words(count);
    for (Size place = 0, end = digits.size(); place < count; ++place) {
        const Size start = end - std::min(end, static_cast<Size>(word.digits));
        words.get()[place] = wordOf(digits.subspan(start, end - start), static_cast<Limb>(radix));
        end = start;
    }
    fromWordDigits(target, {words.get(), count}, word.value, Splits(word.value, count, SPLIT_FROM_DIGITS), 0);
}

std::string toDigits(Natural value, int radix)
{
    if (value.empty())
        return {};
    if (isPowerOfTwo(radix))
        return toBits(value, bitsOf(radix));

    const WordRadix& word = WORD_RADIXES[static_cast<Size>(radix)];
    const auto wholeBits = static_cast<Size>(std::bit_width(word.value) - 1);
    const Size mostWords = value.size() * LIMB_BITS / wholeBits + 1;
    Scratch scratch(mostWords + value.size());
    Limb* const words = scratch.get();
    Limb* const spent = words + mostWords;
    std::copy(value.begin(), value.end(), spent);
    toWordDigits(words, mostWords, {spent, value.size()}, LimbDivisor(word.value),
        Splits(word.value, mostWords, SPLIT_TO_DIGITS), 0);

    const auto write = radix == 10 ? writeDecimalDigits : writeDigits;
    const Size count = trimmed(words, mostWords);
    std::string text(count * static_cast<Size>(word.digits), '0');
    for (Size place = 0; place < count; ++place)
        write(text.data() + text.size() - place * static_cast<Size>(word.digits), word.digits, words[place], radix);
    return text.substr(text.find_first_not_of('0'));
}

} // namespace vx::math::detail
