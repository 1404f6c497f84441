#include "vx/collections/vorb/detail/TextElements.h"

#include "vx/Exception.h"
#include "vx/NumberBoxes.h"
#include "vx/detail/ChainIndex.h"
#include "vx/math/BigDecimal.h"
#include "vx/math/BigInteger.h"
#include "vx/vorb/Boundary.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

namespace vx::collections::vorb::detail {

namespace {

constexpr int NO_KIND = -1, TEXT = 0, FLOATS = 1, DOUBLES = 2, BIG_INTEGERS = 3, BIG_DECIMALS = 4; // then integers
constexpr int FURTHER = 13; // the first of the classes that other rooms have

constinit std::span<const OrderedClass> g_furtherClasses;

/// A key whose class is exactly `Key`.
template <class Key>
const Key& as(const IVXUnknown* key) noexcept
{
    return *static_cast<const Key*>(dynamic_cast<const void*>(key));
}

/// False if bytes at the top of the magnitude are 0. The comparator counts them for one of its two operands only.
bool hasTopByte(const math::BigInteger& number)
{
    constexpr int BYTE_BITS = 8;
    return number.getSize() == 0 || number.getBitCount() > BYTE_BITS * (number.getSize() - 1);
}

/// The kind of a key that can be ordered, NO_KIND for any other.
int kindOf(const IVXUnknown* key) noexcept
{
    static const std::type_info* const KINDS[FURTHER] = {&typeid(String), &typeid(Float), &typeid(Double),
        &typeid(math::BigInteger), &typeid(math::BigDecimal), &typeid(Integer8), &typeid(Integer16), &typeid(Integer32),
        &typeid(Integer64), &typeid(UInteger8), &typeid(UInteger16), &typeid(UInteger32), &typeid(UInteger64)};
    if (key == nullptr)
        return NO_KIND;
    const std::type_info* const type = &typeid(*key); // if a record exists twice, a search is only slower
    if (const auto known = std::ranges::find(KINDS, type); known != std::end(KINDS)) {
        const auto kind = static_cast<int>(known - KINDS);
        return kind != BIG_INTEGERS || hasTopByte(as<math::BigInteger>(key)) ? kind : NO_KIND;
    }
    const auto further = std::ranges::find(g_furtherClasses, type, &OrderedClass::type);
    return further != g_furtherClasses.end() ? FURTHER + static_cast<int>(further - g_furtherClasses.begin()) : NO_KIND;
}

int compareTexts(const String& left, const String& right)
{
    std::u16string_view leftUnits;
    std::u16string_view rightUnits;
    if (vx::detail::PlainBuffer::read(left, &leftUnits) && vx::detail::PlainBuffer::read(right, &rightUnits))
        return vx::detail::compareForIndex(leftUnits, rightUnits);
    const auto keptLeft = keepIfCounted(&left);
    const auto keptRight = keepIfCounted(&right);
    const String copy(String::AcquireCopy, right); // both may have one buffer, which a second lock would wait for
    const vx::detail::StringReadLock leftText(left);
    return vx::detail::compareForIndex({leftText.data(), static_cast<std::size_t>(leftText.length())}, copy.view());
}

template <class Value>
int compareValues(Value left, Value right) noexcept
{
    return left < right ? -1 : left > right ? 1 : 0;
}

/// A failure is thrown with its result, as the library's own comparator gives it.
int compareObjects(const OrderedClass& keyClass, const IVXUnknown* left, const IVXUnknown* right)
{
    int order = 0;
    throwIfFailed(vx::vorb::atBoundary(
        &order, [&] { return keyClass.compare(dynamic_cast<const void*>(left), dynamic_cast<const void*>(right)); }));
    return order;
}

/// A NaN after all numbers.
int compareReals(double left, double right) noexcept
{
    if (std::isnan(left) || std::isnan(right))
        return static_cast<int>(std::isnan(left)) - static_cast<int>(std::isnan(right));
    return compareValues(left, right);
}

} // namespace

void setOrderedClasses(std::span<const OrderedClass> classes) noexcept
{
    g_furtherClasses = classes;
}

bool areLockedTextsEqual(const String& stored, const String& other)
{
    const auto kept = keepIfCounted(&stored);
    return stored.equals(other, false); // both may have the same buffer with a real lock
}

bool areOrdered(const IVXUnknown* left, const IVXUnknown* right) noexcept
{
    const int kind = kindOf(left);
    return kind != NO_KIND && kind == kindOf(right);
}

int compareForIndex(const IVXUnknown* left, const IVXUnknown* right)
{
    const int kind = kindOf(left);
    if (const int order = kind - kindOf(right))
        return order;
    if (kind == NO_KIND)
        return 0;
    if (kind == TEXT)
        return compareTexts(*asText(left), *asText(right));
    if (kind >= FURTHER)
        return compareObjects(g_furtherClasses[static_cast<std::size_t>(kind - FURTHER)], left, right);
    if (kind == BIG_INTEGERS)
        return as<math::BigInteger>(left).compareTo(as<math::BigInteger>(right));
    if (kind == BIG_DECIMALS)
        return as<math::BigDecimal>(left).compareTo(as<math::BigDecimal>(right));
    const auto& leftNumber = dynamic_cast<const Number&>(*left);
    const auto& rightNumber = dynamic_cast<const Number&>(*right);
    return kind == FLOATS || kind == DOUBLES ? compareReals(leftNumber.toDouble(), rightNumber.toDouble())
                                             : compareValues(leftNumber.toInt64(), rightNumber.toInt64());
}

std::uint32_t tagForIndex(const IVXUnknown* key)
{
    const String* const text = asText(key);
    if (text == nullptr)
        return 0;
    if (std::u16string_view units; vx::detail::PlainBuffer::read(*text, &units))
        return vx::detail::tagForIndex(units);
    const auto kept = keepIfCounted(text);
    const vx::detail::StringReadLock lock(*text);
    return vx::detail::tagForIndex({lock.data(), static_cast<std::size_t>(lock.length())});
}

} // namespace vx::collections::vorb::detail
