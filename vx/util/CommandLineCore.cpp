#include "vx/util/detail/CommandLineCoreImpl.h"

#include "vx/TerminatedText.h"
#include "vxsys/Number.h"

namespace vx::util {

namespace {

/// The value of `text` by `convert`, which leaves its second argument at the start where there is no number.
template <class Convert>
auto numberIn(const String& text, const char16_t* complaint, Convert convert)
{
    const TerminatedText terminated(text);
    const char16_t* end = nullptr;
    const auto value = convert(terminated, &end);
    if (end == terminated)
        throw Exception(complaint);
    return value;
}

} // namespace

CommandLineValues::CommandLineValues(const String& name, int position)
    : m_name(name)
    , m_position(position)
{
}

const String& CommandLineValues::getString(int index) const
{
    return detail::at(m_values, index);
}

std::int32_t CommandLineValues::getLong(int index) const
{
    return numberIn(getString(index), u"Unable to convert string to long",
        [](const char16_t* text, const char16_t** end) { return VXStrToLW(text, end, 0); });
}

double CommandLineValues::getDouble(int index) const
{
    return numberIn(getString(index), u"Unable to convert string to double",
        [](const char16_t* text, const char16_t** end) { return VXStrToDW(text, end); });
}

void CommandLineValues::addAll(const char16_t* text, bool pairIsEmpty)
{
    std::u16string copy(text);
    detail::TokenReader tokens(copy.data(), pairIsEmpty);
    while (const char16_t* token = tokens.next(u", "))
        add(token);
}

String joinArguments(int count, char** const arguments)
{
    String text;
    for (int index = 0; index < count; ++index) {
        const String argument(arguments[index]);
        const bool hasBlank = argument.indexOf(u' ') >= 0;
        if (hasBlank)
            text.append(u'"');
        text.append(argument);
        if (hasBlank)
            text.append(u'"');
        text.append(u' ');
    }
    return text;
}

} // namespace vx::util
