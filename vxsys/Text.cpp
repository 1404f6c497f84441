#include "vxsys/Text.h"

#include "vxsys/Memory.h"
#include "vxsys/detail/CaseTables.h"
#include "vxsys/detail/Units8.h"
#include "vxsys/detail/Utf.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <limits>
#include <string_view>

namespace {

using namespace vxsys::detail;

constexpr std::int32_t MAX_LENGTH = std::numeric_limits<std::int32_t>::max();

/// The bit by which the two cases of an ASCII letter differ.
constexpr std::uint16_t CASE_BIT = 0x20;

std::int32_t clipLength(std::size_t length) noexcept
{
    return static_cast<std::int32_t>(std::min<std::size_t>(length, MAX_LENGTH));
}

std::int32_t signOf(std::int32_t difference) noexcept
{
    return (difference > 0) - (difference < 0);
}

/// The first place of `unit` or of the terminator. Reads whole aligned blocks. Such a block never extends into another
/// page, but it may contain units after the terminator. Sanitizers must not check these reads.
__attribute__((no_sanitize("address"), no_sanitize("thread"))) inline const char16_t* findUnitOrEnd(
    const char16_t* text, char16_t unit) noexcept
{
    const auto address = reinterpret_cast<std::uintptr_t>(text);
    const std::uintptr_t before = address % sizeof(Units8);
    const auto* block = reinterpret_cast<const Units8*>(address - before);
    const Units8 wanted = everyLane(unit);
    const Units8 zero = everyLane(0);

    unsigned found = maskOf(Units8((*block == wanted) | (*block == zero))) >> before << before;
    while (found == 0) {
        ++block;
        found = maskOf(Units8((*block == wanted) | (*block == zero)));
    }
    return reinterpret_cast<const char16_t*>(block) + std::countr_zero(found) / 2;
}

std::size_t lengthOf(const char16_t* text) noexcept
{
    return static_cast<std::size_t>(findUnitOrEnd(text, u'\0') - text);
}

struct Lower {
    static char16_t fold(char16_t unit) noexcept
    {
        if (unit < 0x80)
            return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit | CASE_BIT) : unit;
        return static_cast<char16_t>(unit + TO_LOWER_OFFSETS[TO_LOWER_BLOCKS[unit / CASE_BLOCK]][unit % CASE_BLOCK]);
    }
    static Units8 foldAscii(Units8 units) noexcept
    {
        return units | (lanesWithin(units, u'A', u'Z') & everyLane(CASE_BIT));
    }
};

struct Upper {
    static char16_t fold(char16_t unit) noexcept
    {
        if (unit < 0x80)
            return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit ^ CASE_BIT) : unit;
        return static_cast<char16_t>(unit + TO_UPPER_OFFSETS[TO_UPPER_BLOCKS[unit / CASE_BLOCK]][unit % CASE_BLOCK]);
    }
    static Units8 foldAscii(Units8 units) noexcept
    {
        return units ^ (lanesWithin(units, u'a', u'z') & everyLane(CASE_BIT));
    }
};

template <typename Case>
void foldText(char16_t* text) noexcept
{
    char16_t* const end = text + lengthOf(text);
    while (end - text >= UNITS8) {
        const Units8 units = load8(text);
        if (isAscii(units))
            store8(text, Case::foldAscii(units));
        else
            std::transform(text, text + UNITS8, text, Case::fold);
        text += UNITS8;
    }
    std::transform(text, end, text, Case::fold);
}

std::int32_t compareFolded(const char16_t* left, const char16_t* right, std::size_t count) noexcept
{
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t difference = Lower::fold(left[i]) - Lower::fold(right[i]);
        if (difference != 0)
            return signOf(difference);
    }
    return 0;
}

/// Whether two blocks are equal without the case of ASCII letters. Other letters need the tables.
bool isSameAsciiText(Units8 left, Units8 right) noexcept
{
    return maskOf(Units8(Lower::foldAscii(left) == Lower::foldAscii(right))) == ALL_LANES;
}

bool isOneOf(const char16_t* set, char16_t unit) noexcept
{
    return set != nullptr && unit != 0 && *findUnitOrEnd(set, unit) == unit;
}

} // namespace

std::int32_t VXStrLenW(const char16_t* text) noexcept
{
    return text != nullptr ? clipLength(lengthOf(text)) : 0;
}

std::int32_t VXStrLenA(const char* text) noexcept
{
    return text != nullptr ? clipLength(std::strlen(text)) : 0;
}

std::int32_t VXStrCmpW(const char16_t* left, const char16_t* right) noexcept
{
    if (left == nullptr)
        left = u"";
    if (right == nullptr)
        right = u"";
    while (*left == *right && *left != 0) {
        ++left;
        ++right;
    }
    return signOf(*left - *right);
}

std::int32_t VXStrNICmpW(const char16_t* left, const char16_t* right, std::int32_t count) noexcept
{
    if (left == nullptr)
        left = u"";
    if (right == nullptr)
        right = u"";
    for (; count > 0; --count, ++left, ++right) {
        const std::int32_t difference = Lower::fold(*left) - Lower::fold(*right);
        if (difference != 0 || *left == 0)
            return signOf(difference);
    }
    return 0;
}

std::int32_t VXMemNICmpW(const char16_t* left, const char16_t* right, std::int32_t count) noexcept
{
    if (count <= 0)
        return 0;
    if (left == nullptr || right == nullptr)
        return signOf((left != nullptr) - (right != nullptr));

    auto rest = static_cast<std::size_t>(count);
    while (rest >= UNITS8) {
        if (!isSameAsciiText(load8(left), load8(right))) {
            if (const std::int32_t order = compareFolded(left, right, UNITS8))
                return order;
        }
        left += UNITS8;
        right += UNITS8;
        rest -= UNITS8;
    }
    return compareFolded(left, right, rest);
}

const char16_t* VXStrChrW(const char16_t* text, char16_t unit) noexcept
{
    if (text == nullptr)
        return nullptr;
    const char16_t* place = findUnitOrEnd(text, unit);
    return *place == unit ? place : nullptr;
}

const char* VXStrChrA(const char* text, char character) noexcept
{
    return text != nullptr ? std::strchr(text, character) : nullptr;
}

char16_t* VXStrCpyW(char16_t* target, const char16_t* source) noexcept
{
    if (target == nullptr)
        return nullptr;
    if (source == nullptr)
        source = u"";
    std::memcpy(target, source, (lengthOf(source) + 1) * sizeof(char16_t));
    return target;
}

char16_t* VXStrNCpyW(char16_t* target, const char16_t* source, std::int32_t count) noexcept
{
    if (target == nullptr)
        return nullptr;
    if (source == nullptr)
        source = u"";
    std::int32_t i = 0;
    for (; i < count && source[i] != 0; ++i)
        target[i] = source[i];
    for (; i < count; ++i)
        target[i] = 0;
    return target;
}

char* VXStrDupA(const char* text) noexcept
{
    if (text == nullptr)
        return nullptr;
    const std::size_t size = std::strlen(text) + 1;
    auto* copy = static_cast<char*>(VXMemAlloc(size));
    if (copy != nullptr)
        std::memcpy(copy, text, size);
    return copy;
}

void VXStrFreeA(char* text) noexcept
{
    VXMemFree(text);
}

char16_t* VXStrTokW(char16_t* text, const char16_t* delimiters, char16_t** position) noexcept
{
    if (position == nullptr)
        return nullptr;
    char16_t* token = text != nullptr ? text : *position;
    if (token == nullptr)
        return nullptr;

    while (isOneOf(delimiters, *token))
        ++token;
    if (*token == 0) {
        *position = token;
        return nullptr;
    }
    char16_t* end = token + 1;
    if (delimiters != nullptr && delimiters[0] != 0 && delimiters[1] == 0)
        end += findUnitOrEnd(end, delimiters[0]) - end;
    while (*end != 0 && !isOneOf(delimiters, *end))
        ++end;
    *position = end;
    if (*end != 0) {
        *end = 0;
        ++*position;
    }
    return token;
}

char16_t VXToLowerW(char16_t unit) noexcept
{
    return Lower::fold(unit);
}

char16_t VXToUpperW(char16_t unit) noexcept
{
    return Upper::fold(unit);
}

char16_t* VXStrToLowerW(char16_t* text) noexcept
{
    if (text != nullptr)
        foldText<Lower>(text);
    return text;
}

char16_t* VXStrToUpperW(char16_t* text) noexcept
{
    if (text != nullptr)
        foldText<Upper>(text);
    return text;
}

std::int32_t VXUnicodeToAnsi(const char16_t* source, std::int32_t length, char* target, std::int32_t size) noexcept
{
    if (target == nullptr || size < 0)
        return -1;
    if (size == 0)
        return 0;
    *target = '\0';
    if (source == nullptr || length < -1)
        return -1;

    const std::u16string_view text(source, length == -1 ? lengthOf(source) : static_cast<std::size_t>(length));
    const Conversion done = utf16ToUtf8(text, target, static_cast<std::size_t>(size) - 1);
    if (done.outcome != Outcome::done) {
        *target = '\0';
        return done.outcome == Outcome::noRoom ? 0 : -1;
    }
    target[done.written] = '\0';
    return static_cast<std::int32_t>(done.written) + 1;
}
