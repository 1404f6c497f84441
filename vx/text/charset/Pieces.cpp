#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/TerminatedText.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/Decoder.h"
#include "vx/text/charset/Encoder.h"
#include "vx/text/charset/detail/Unicode.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

namespace vx::text::charset {

namespace {

constexpr std::size_t LONGEST = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t BLOCK = 1024;

/// Runs `work`. After a failure the converter begins a new text.
template <class Converter, class Work>
auto orBeginAnew(Converter& converter, Work work)
{
    try {
        return work();
    } catch (...) {
        converter.reset();
        throw;
    }
}

/// Passes all units through `convert`, block by block, until it makes no progress. Returns how many were converted.
template <class Unit, class Converted, class Converter, class Take>
std::int32_t convertAll(Converter& converter, const Unit* units, std::size_t count, Take take)
{
    if (count > LONGEST)
        throwResult(RESULT_INVALID_ARGUMENT);
    Converted block[BLOCK];
    std::int32_t done = 0;
    for (;;) {
        const std::int32_t before = done;
        std::int32_t stored = 0;
        converter.convert(units, &done, static_cast<std::int32_t>(count), block, &stored, BLOCK);
        take(block, stored);
        if (done == before && stored == 0)
            return done;
    }
}

} // namespace

Decoder::Decoder(const String& encoding)
    : m_converter(ByteToCharConverter::getConverter(TerminatedText(encoding)))
{
}

Decoder::~Decoder() = default;

String Decoder::decode(std::string_view bytes)
{
    std::vector<signed char> input(std::move(m_pending));
    m_pending.clear();
    return orBeginAnew(*m_converter, [&] {
        input.insert(input.end(), bytes.begin(), bytes.end());
        String text;
        const std::int32_t done = convertAll<signed char, char16_t>(*m_converter, input.data(), input.size(),
            [&](const char16_t* units, std::int32_t count) { text.append(units, count); });
        m_pending.assign(input.begin() + done, input.end());
        return text;
    });
}

String Decoder::finish()
{
    const std::size_t count = std::exchange(m_pending, {}).size();
    m_converter->reset();
    if (count > 0 && !m_converter->getSubstitutionMode())
        throw InvalidCharacterException(u"incomplete character");
    return String(detail::REPLACEMENT, static_cast<int>(count));
}

void Decoder::setSubstitutionMode(bool mode)
{
    m_converter->setSubstitutionMode(mode);
}

Encoder::Encoder(const String& encoding)
    : m_converter(CharToByteConverter::getConverter(TerminatedText(encoding)))
{
}

Encoder::~Encoder() = default;

std::string Encoder::encode(std::u16string_view text)
{
    return orBeginAnew(*m_converter, [&] {
        std::string bytes;
        convertAll<char16_t, signed char>(
            *m_converter, text.data(), text.size(), [&](const signed char* units, std::int32_t count) {
                bytes.append(reinterpret_cast<const char*>(units), static_cast<std::size_t>(count));
            });
        return bytes;
    });
}

std::string Encoder::finish()
{
    signed char block[BLOCK];
    std::int32_t stored = 0;
    orBeginAnew(*m_converter, [&] { m_converter->flush(block, &stored, BLOCK); });
    m_converter->reset();
    return {reinterpret_cast<const char*>(block), static_cast<std::size_t>(stored)};
}

void Encoder::setSubstitutionMode(bool mode)
{
    m_converter->setSubstitutionMode(mode);
}

} // namespace vx::text::charset
