#pragma once

#include <concepts>
#include <cstddef>
#include <type_traits>

namespace vx {
class String;
}

namespace vx::detail {

class FormatArgument;

/// A text for the overloads of `String::format` with variable arguments.
template <class T>
concept PlainFormatArgument = std::same_as < std::decay_t<T>,
const char16_t* > || std::same_as<std::decay_t<T>, char16_t*> || std::same_as<std::decay_t<T>, std::nullptr_t>;

/// Arguments that those overloads do not accept.
template <class... Arguments>
concept CheckedFormatArguments = sizeof...(Arguments) > 0 && !(PlainFormatArgument<Arguments> && ...);

/// A template that is no String may be followed by its length, so the first argument must not look like one.
template <class Form, class First>
concept FormatOfAnyText = std::derived_from<Form, String> || !std::convertible_to<const First&, int>;

} // namespace vx::detail
