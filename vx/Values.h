#pragma once

#include "vx/Describe.h"
#include "vx/Exception.h"
#include "vx/Object.h"
#include "vx/String.h"

#include <concepts>
#include <cstddef>
#include <iosfwd>
#include <type_traits>
#include <version>
#if defined(__cpp_lib_format)
#include <format>
#include <string>
#endif

// Output to streams, formatters and a literal for objects of the library, as values of the standard library have them.

namespace vx {

namespace detail {

/// An object with a `toString` and no other inserter for streams.
template <class T>
concept PrintedByText = std::derived_from<T, Object> && !std::derived_from<T,
                            String> && !std::derived_from<T, Exception> && !std::is_convertible_v<const T&, double>;

} // namespace detail

/// Writes the result of `toString` in UTF-8.
template <detail::PrintedByText T>
std::ostream& operator<<(std::ostream& stream, const T& value)
{
    return stream << static_cast<const Object&>(value).toString();
}

} // namespace vx

namespace vx {

inline namespace literals {

/// `u"text"_vs`
inline String operator""_vs(const char16_t* text, std::size_t length)
{
    return String(text, static_cast<int>(length));
}
} // namespace literals

} // namespace vx

#if defined(__cpp_lib_format)
/// The result of `toString`; of an exception that of `describe`. Takes the options of a text: `std::format("{:>20}", number)`.
template <std::derived_from<vx::Object> T>
struct std::formatter<T> : std::formatter<std::string> {
    auto format(const T& value, std::format_context& context) const
    {
        std::string text;
        if constexpr (std::derived_from<T, vx::Exception>)
            text = vx::describe(value).toUtf8();
        else
            text = static_cast<const vx::Object&>(value).toString().toUtf8();
        return std::formatter<std::string>::format(text, context);
    }
};
#endif
