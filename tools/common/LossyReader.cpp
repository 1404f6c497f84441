#include "LossyReader.h"

#include <vx/TerminatedText.h>
#include <vx/text/charset/CharsetException.h>
#include <vxsys/Surrogate.h>

#include <algorithm>
#include <string_view>

namespace vxtools {

using vx::text::charset::ByteToCharConverter;

namespace {

constexpr char16_t REPLACEMENT = u'\uFFFD';
constexpr std::size_t MOST_HELD = 4; ///< units that a decoder may store at the end

std::int32_t unitSizeOf(std::u16string_view encoding)
{
    return encoding.starts_with(u"UTF-32") ? 4 : encoding.starts_with(u"UTF-16") ? 2 : 1;
}

} // namespace

LossyDecoder::LossyDecoder(const vx::String& encoding)
    : m_decoder(ByteToCharConverter::getConverter(vx::TerminatedText(encoding)))
    , m_unitSize(unitSizeOf(m_decoder->getEncodingName()))
{
}

std::size_t LossyDecoder::decode(std::span<const signed char> bytes, bool isLast, std::u16string& text)
{
    const auto length = static_cast<std::int32_t>(bytes.size());
    const std::size_t start = text.size();
    text.resize(start + bytes.size() * static_cast<std::size_t>(m_decoder->getMaxCharsPerByte()) + MOST_HELD);
    char16_t* const target = text.data() + start;
    const auto room = static_cast<std::int32_t>(text.size() - start);
    std::int32_t position = 0;
    std::int32_t count = 0;
    for (bool isBad = true; isBad && position < length;) {
        try {
            m_decoder->convert(bytes.data(), &position, length, target, &count, room);
            isBad = isLast && position < length; // the last character is incomplete
        } catch (const vx::text::charset::InvalidCharacterException&) {
        }
        if (isBad) {
            target[count++] = REPLACEMENT;
            position += std::min(m_unitSize, length - position);
        }
    }
    if (isLast)
        m_decoder->flush(target, &count, room);
    text.resize(start + static_cast<std::size_t>(count));
    return static_cast<std::size_t>(position);
}

LossyReader::LossyReader(vx::io::InputStream* source, const vx::String& encoding, std::size_t blockSize)
    : m_source(source)
    , m_decoder(encoding)
    , m_bytes(blockSize)
{
}

std::int32_t LossyReader::read(char16_t* target, std::int32_t length)
{
    if (length < 1)
        return 0;
    while (m_position == m_text.size()) {
        if (m_isAtEnd)
            return -1;
        fill();
    }
    const std::size_t count = m_text.copy(target, static_cast<std::size_t>(length), m_position);
    m_position += count;
    return static_cast<std::int32_t>(count);
}

void LossyReader::fill()
{
    m_text.clear();
    m_position = 0;
    const std::span<signed char> free = std::span(m_bytes).subspan(m_byteCount);
    const std::int32_t got = m_source->read(free.data(), static_cast<std::int32_t>(free.size()));
    m_isAtEnd = got < 0;
    m_byteCount += static_cast<std::size_t>(std::max(got, 0));
    const std::span<signed char> bytes = std::span(m_bytes).first(m_byteCount);
    const std::span<signed char> rest = bytes.subspan(m_decoder.decode(bytes, m_isAtEnd, m_text));
    std::copy(rest.begin(), rest.end(), m_bytes.begin());
    m_byteCount = rest.size();
}

void replaceLoneSurrogates(vx::String& text)
{
    const std::u16string_view view = text.view();
    if (std::ranges::none_of(view, vxsys::isSurrogate<char16_t>))
        return;
    std::u16string whole(view);
    for (std::size_t index = 0; index < whole.size(); ++index) {
        if (vxsys::isLoneSurrogate(view, index))
            whole[index] = REPLACEMENT;
    }
    text = vx::String(std::u16string_view(whole));
}

} // namespace vxtools
