#include "vx/util/detail/CommandLineCoreImpl.h"

#include "vx/TerminatedText.h"
#include "vx/text/charset/ByteToCharConverter.h"
#include "vx/text/charset/CharsetException.h"
#include "vxsys/Number.h"

#include <cstring>
#include <vector>

namespace vx::util::detail {

namespace {

/// Converts `text` by `convert`, which leaves its second argument at the start if there is no number.
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

/// Decodes `bytes` in the default encoding. Each byte that belongs to no character becomes U+FFFD.
String decodeLossily(const char* bytes)
{
    using text::charset::ByteToCharConverter;
    const Reference<ByteToCharConverter> decoder(ByteToCharConverter::getConverter(nullptr));
    const std::vector<signed char> source(bytes, bytes + std::strlen(bytes));
    const auto length = static_cast<std::int32_t>(source.size());
    std::vector<char16_t> units(source.size() * static_cast<std::size_t>(decoder->getMaxCharsPerByte()) + 1);
    const auto room = static_cast<std::int32_t>(units.size());
    std::int32_t end = 0;
    for (std::int32_t position = 0; position < length; ++position) {
        try {
            decoder->convert(source.data(), &position, length, units.data(), &end, room);
        } catch (const text::charset::InvalidCharacterException&) {
        }
        if (position < length)
            units[static_cast<std::size_t>(end++)] = u'\uFFFD';
    }
    return String(std::u16string_view(units.data(), static_cast<std::size_t>(end)));
}

String textOf(const char* argument)
{
    try {
        return String(argument);
    } catch (const text::charset::InvalidCharacterException&) {
        return decodeLossily(argument);
    }
}

} // namespace

CommandLineValues::CommandLineValues(const String& name, int position)
    : m_name(name)
    , m_position(position)
{
}

const String& CommandLineValues::getString(int index) const
{
    return at(m_values, index);
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
    TokenReader tokens(copy.data(), pairIsEmpty);
    while (const char16_t* token = tokens.next(u", "))
        add(token);
}

String joinArguments(int count, char** const arguments)
{
    String text;
    for (int index = 0; index < count; ++index) {
        const String argument = textOf(arguments[index]);
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

} // namespace vx::util::detail
