#include "vx/util/detail/CommandLineCoreImpl.h"

#include "vx/TerminatedText.h"
#include "vx/text/charset/ByteToCharConverter.h"
#include "vx/text/charset/CharsetException.h"
#include "vxsys/Number.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <string_view>
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

bool isAscii(std::string_view text) noexcept
{
    unsigned char bits = 0;
    for (const char unit : text)
        bits |= static_cast<unsigned char>(unit);
    return bits < 0x80;
}

/// Whether all ASCII characters have the same code in the default encoding.
bool decodesAsciiAsItself()
{
    static constexpr auto BYTES = [] {
        std::array<char, 0x80> bytes {}; // the last one ends the text
        for (std::size_t place = 0; place + 1 < bytes.size(); ++place)
            bytes[place] = static_cast<char>(place + 1);
        return bytes;
    }();
    try {
        const String decoded(BYTES.data());
        return std::ranges::equal(decoded.view(), std::string_view(BYTES.data()));
    } catch (const text::charset::InvalidCharacterException&) {
        return false;
    }
}

template <class Unit>
void appendArgument(std::u16string& line, std::basic_string_view<Unit> argument)
{
    const bool hasBlank = argument.find(Unit {' '}) != argument.npos;
    if (hasBlank)
        line += u'"';
    const std::size_t start = line.size();
    line.resize(start + argument.size());
    std::ranges::copy(argument, line.begin() + static_cast<std::ptrdiff_t>(start));
    if (hasBlank)
        line += u'"';
    line += u' ';
}

} // namespace

CommandLineValues::CommandLineValues(const String& name, int position)
    : m_name(name)
    , m_position(position)
{
}

const String& CommandLineValues::getString(int index) const
{
    if (isParameter() && index == 0)
        return m_name;
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

std::u16string joinedArguments(int count, char** arguments)
{
    std::u16string text;
    int given = 0;
    std::size_t bytes = 0; // with a blank for each argument
    while (arguments != nullptr && given < count && arguments[given] != nullptr)
        bytes += std::strlen(arguments[given++]) + 1;
    text.reserve(bytes);
    const bool asciiIsItself = decodesAsciiAsItself();
    for (int index = 0; index < given; ++index) {
        const std::string_view argument = arguments[index];
        if (asciiIsItself && isAscii(argument)) {
            appendArgument(text, argument);
        } else {
            const String decoded = textOf(arguments[index]);
            appendArgument(text, decoded.view());
        }
    }
    return text;
}

String joinArguments(int count, char** arguments)
{
    return String(joinedArguments(count, arguments));
}

} // namespace vx::util::detail
