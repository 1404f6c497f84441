#pragma once

#include "vx/ByteOrder.h"
#include "vx/text/charset/detail/Unicode.h"

#include <bit>
#include <concepts>
#include <cstdint>
#include <typeinfo>

namespace vx::text::charset::detail {

using vx::detail::loadNumber;
using vx::detail::storeNumber;

/// Converts a number between `order` and the byte order of this machine.
template <std::endian order>
struct Ordered {
    template <std::unsigned_integral Number>
    constexpr Number operator()(Number number) const noexcept
    {
        return order == std::endian::native ? number : vx::detail::swapBytes(number);
    }
};

/// Calls `convert` with `Ordered` if the converter has one of the two classes. A derived class may override the hook,
/// so `convert` gets `hook` for it.
template <class LittleEndian, class BigEndian, class Converter, class Convert, class Hook>
std::int32_t convertInOrder(const Converter& converter, Convert&& convert, Hook hook)
{
    const std::type_info& type = typeid(converter);
    if (type == typeid(LittleEndian))
        return convert(Ordered<std::endian::little> {});
    if (type == typeid(BigEndian))
        return convert(Ordered<std::endian::big> {});
    return convert(hook);
}

} // namespace vx::text::charset::detail

// The operations of the UTF-16 and UTF-32 converters for one byte order, which differ only in these arguments. `hook`
// converts a `Number`.

#define VX_ORDERED_CONVERTER(Class, name, order, Number, hook)                                                         \
    Class::~Class() noexcept = default;                                                                                \
                                                                                                                       \
    const char16_t* Class::getEncodingName()                                                                           \
    {                                                                                                                  \
        return name;                                                                                                   \
    }                                                                                                                  \
                                                                                                                       \
    char16_t Class::convertChar(char16_t unit)                                                                         \
    {                                                                                                                  \
        return Ordered<order>()(unit);                                                                                 \
    }                                                                                                                  \
                                                                                                                       \
    Number Class::hook(Number value)                                                                                   \
    {                                                                                                                  \
        return Ordered<order>()(value);                                                                                \
    }

/// The substitution of an encoder is U+FFFD.
#define VX_ORDERED_ENCODER(Class, name, order, Number, hook)                                                           \
    Class::Class() noexcept                                                                                            \
    {                                                                                                                  \
        storeNumber<order>(m_substitutionBytes, static_cast<Number>(REPLACEMENT));                                     \
        m_substitutionLength = sizeof(Number);                                                                         \
    }                                                                                                                  \
                                                                                                                       \
    VX_ORDERED_CONVERTER(Class, name, order, Number, hook)
