#include "vx/collections/vorb/detail/Search.h"

#include "vx/NumberBoxes.h"
#include "vx/detail/StringLocks.h"
#include "vx/detail/TextScan.h"

#include <string_view>

namespace vx::collections::vorb::detail {

namespace {

struct EqualityRow {
    const std::type_info* type;
    AreEqual areEqual;
};

Equality answer(bool isEqual) noexcept
{
    return isEqual ? Equality::YES : Equality::NO;
}

Equality areSame(const void* left, const void* right) noexcept
{
    return answer(left == right);
}

Equality areEqualTexts(const void* left, const void* right) noexcept
{
    if (left == right)
        return Equality::YES;
    std::u16string_view leftUnits;
    std::u16string_view rightUnits;
    if (!vx::detail::PlainBuffer::read(*static_cast<const String*>(left), &leftUnits)
        || !vx::detail::PlainBuffer::read(*static_cast<const String*>(right), &rightUnits))
        return Equality::UNKNOWN;
    return answer(leftUnits.size() == rightUnits.size()
        && vx::detail::equalUnits(leftUnits.data(), rightUnits.data(), static_cast<int>(leftUnits.size())));
}

template <class Box>
Equality areEqualNumbers(const void* left, const void* right) noexcept
{
    return answer(left == right || +*static_cast<const Box*>(left) == +*static_cast<const Box*>(right)); // a NaN
}

template <class Box>
EqualityRow numberRow() noexcept
{
    return {&typeid(Box), areEqualNumbers<Box>};
}

} // namespace

AreEqual equalityOf(const std::type_info& type) noexcept
{
    static const EqualityRow ROWS[]
        = {{&typeid(String), areEqualTexts}, {&typeid(Object), areSame}, numberRow<Integer8>(), numberRow<Integer16>(),
            numberRow<Integer32>(), numberRow<Integer64>(), numberRow<UInteger8>(), numberRow<UInteger16>(),
            numberRow<UInteger32>(), numberRow<UInteger64>(), numberRow<Float>(), numberRow<Double>()};
    for (const EqualityRow& row : ROWS)
        if (row.type == &type)
            return row.areEqual;
    return nullptr;
}

} // namespace vx::collections::vorb::detail
