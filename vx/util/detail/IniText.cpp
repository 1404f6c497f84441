#include "vx/util/detail/IniText.h"

#include "vx/text/charset/ByteToCharConverter.h"
#include "vx/text/charset/detail/EncodeText.h"

#include <algorithm>
#include <optional>

namespace vx::util::detail {

namespace {

using text::charset::ByteToCharConverter;
using text::charset::CharToByteConverter;
using text::charset::InvalidCharacterException;

constexpr std::size_t LINE_SIZE = 510;
constexpr std::size_t SET_NAME_SIZE = 259;
constexpr std::size_t TEXT_SIZE = 254;
constexpr std::string_view UTF8_MARKER = "\xEF\xBB\xBF";
constexpr std::string_view COMMENT_SIGNS = "#;:";
constexpr std::string_view WHITE_SPACE = " \t\n\v\f\r";
constexpr std::string_view TRIMMED = " \t\r\n";
constexpr char16_t REPLACEMENT = u'\uFFFD';

std::string_view trim(std::string_view text)
{
    const std::size_t first = std::min(text.find_first_not_of(TRIMMED), text.size());
    return text.substr(first, text.find_last_not_of(TRIMMED) + 1 - first);
}

/// Reads the file piece by piece. A piece is a line, or a part of a line that is too long.
class LineReader {
public:
    explicit LineReader(std::string_view bytes)
        : m_rest(bytes)
    {
    }

    /// The next piece, up to a zero byte.
    std::optional<std::string_view> next()
    {
        if (m_rest.empty())
            return std::nullopt;
        const std::string_view piece = m_rest.substr(0, LINE_SIZE);
        const std::size_t newline = piece.find('\n');
        const std::string_view line = piece.substr(0, newline != piece.npos ? newline + 1 : newline);
        m_rest.remove_prefix(line.size());
        return line.substr(0, line.find('\0'));
    }

private:
    std::string_view m_rest;
};

class Decoder {
public:
    Decoder()
        : m_converter(ByteToCharConverter::getConverter(nullptr))
    {
    }

    void switchToUtf8() { m_converter = ByteToCharConverter::getConverter(u"UTF-8"); }

    String decode(std::string_view bytes)
    {
        const auto* source = reinterpret_cast<const signed char*>(bytes.data());
        const auto size = static_cast<std::int32_t>(bytes.size());
        m_units.resize(bytes.size() * static_cast<std::size_t>(std::max(m_converter->getMaxCharsPerByte(), 1)) + 1);
        std::int32_t done = 0;
        std::int32_t length = 0;
        while (done < size) {
            try {
                m_converter->convert(
                    source, &done, size, m_units.data(), &length, static_cast<std::int32_t>(m_units.size()));
            } catch (const InvalidCharacterException&) { // the position tells where it is
            }
            if (done == size)
                break;
            m_converter->reset();
            m_units[static_cast<std::size_t>(length++)] = REPLACEMENT;
            ++done;
        }
        return String(m_units.data(), length);
    }

private:
    Reference<ByteToCharConverter> m_converter;
    std::u16string m_units;
};

class Encoder {
public:
    Encoder()
        : m_converter(CharToByteConverter::getConverter(nullptr))
    {
    }

    /// Appends as many whole characters as `limit` bytes hold.
    void encode(const String& text, std::size_t limit, std::string& target)
    {
        const std::u16string_view units = text.view();
        const std::size_t start = target.size();
        target.resize(start + limit);
        auto* bytes = reinterpret_cast<signed char*>(target.data() + start);
        const auto size = static_cast<std::int32_t>(limit);
        std::int32_t done = 0;
        std::int32_t written = 0;
        for (;;) {
            try {
                m_converter->reset();
                text::charset::detail::encodeText(*m_converter, units, done, bytes, written, size);
                break;
            } catch (const InvalidCharacterException&) {
                if (written == size)
                    break;
                bytes[written++] = '?';
                done = std::min(done + 1, static_cast<std::int32_t>(units.size()));
            }
        }
        target.resize(start + static_cast<std::size_t>(written));
    }

private:
    Reference<CharToByteConverter> m_converter;
};

/// Looks at the end first, which is the right place in a file that this library wrote.
template <class Map>
typename Map::mapped_type& place(Map& map, String&& name)
{
    return map.try_emplace(map.end(), std::move(name))->second;
}

} // namespace

IniSets parseIniText(std::string_view bytes)
{
    IniSets sets;
    LineReader lines(bytes);
    Decoder decoder;
    String set;
    IniKeys keys;
    bool isInSet = false;

    while (const std::optional<std::string_view> read = lines.next()) {
        std::string_view line = *read;
        if (line.starts_with(UTF8_MARKER)) {
            line.remove_prefix(UTF8_MARKER.size());
            decoder.switchToUtf8();
        }
        if (line.empty() || COMMENT_SIGNS.find(line.front()) != line.npos
            || WHITE_SPACE.find(line.front()) != line.npos)
            continue;

        if (line.front() == '[') {
            const std::size_t bracket = line.rfind(']');
            if (bracket == line.npos)
                break;
            if (isInSet)
                place(sets, std::move(set)) = std::move(keys);
            set = decoder.decode(line.substr(1, bracket - 1));
            keys = {};
            isInSet = true;
            continue;
        }
        const std::size_t sign = line.find('=');
        if (sign == line.npos)
            break;
        if (isInSet)
            place(keys, decoder.decode(trim(line.substr(0, sign)))) = decoder.decode(trim(line.substr(sign + 1)));
    }
    if (isInSet && !set.isEmpty())
        place(sets, std::move(set)) = std::move(keys);
    return sets;
}

std::string printIniText(const IniSets& sets)
{
    std::string text;
    Encoder encoder;
    for (const auto& [name, keys] : sets) {
        text += '[';
        encoder.encode(name, SET_NAME_SIZE, text);
        text += "]\n";
        for (const auto& [key, value] : keys) {
            encoder.encode(key, TEXT_SIZE, text);
            text += '=';
            encoder.encode(value, TEXT_SIZE, text);
            text += '\n';
        }
        text += '\n';
    }
    return text;
}

} // namespace vx::util::detail
