#include "vx/io/AlphaNumInputStream.h"

#include "vx/detail/ExactType.h"
#include "vx/io/BufferedInputStream.h"
#include "vx/io/detail/AlphaNum.h"
#include "vx/io/detail/BufferedInput.h"
#include "vx/io/detail/StreamChecks.h"
#include "vx/text/charset/CharsetException.h"

namespace vx::io {

namespace {

constexpr std::int8_t NO_VALUE = -1;

/// The shifts for the five bits of a character in each step: by `complete` for the bits that complete a byte, by `keep`
/// for the bits that begin the next byte.
struct Step {
    bool completes;
    int complete; ///< shift to the right
    int keep; ///< shift to the left
};
constexpr Step STEPS[] = {
    {false, 0, 3},
    {true, 2, 6},
    {false, 0, 1},
    {true, 4, 4},
    {true, 1, 7},
    {false, 0, 2},
    {true, 3, 5},
    {true, 0, 8},
};

using Values = std::array<std::int8_t, 256>;
constexpr std::size_t GROUP_CHARACTERS = 8;
constexpr std::int32_t GROUP_BYTES = 5;

/// Decodes a whole group. Returns false, and has stored nothing, for a character that is not in the alphabet.
bool decodeGroup(const Values& values, const signed char* characters, signed char* target) noexcept
{
    std::int64_t bits = 0;
    int any = 0; // negative if one of them was
    for (std::size_t index = 0; index < GROUP_CHARACTERS; ++index) {
        const int value = values[static_cast<std::uint8_t>(characters[index])];
        any |= value;
        bits = bits << 5 | value;
    }
    if (any < 0)
        return false;
    for (int index = GROUP_BYTES - 1; index >= 0; --index, bits >>= 8)
        target[index] = static_cast<signed char>(bits);
    return true;
}

/// Decodes whole groups that are in the buffer of a stream, whose reads have no effect but their results.
std::int32_t readGroups(const Values& values, InputStream& in, signed char* target, std::int32_t length)
{
    using Input = detail::BufferedInput<BufferedInputStream>;
    if (!vx::detail::isExactly<BufferedInputStream>(in))
        return 0;
    auto& stream = static_cast<BufferedInputStream&>(in);
    const auto characters = Input::buffered(stream);
    std::size_t used = 0;
    std::int32_t done = 0;
    while (characters.size() - used >= GROUP_CHARACTERS && length - done >= GROUP_BYTES
        && decodeGroup(values, characters.data() + used, target + done)) {
        used += GROUP_CHARACTERS;
        done += GROUP_BYTES;
    }
    Input::skipBuffered(stream, used);
    return done;
}

} // namespace

AlphaNumInputStream::AlphaNumInputStream(InputStream* source, const char16_t* alphabet)
    : FilterInputStream(source)
{
    m_values.fill(NO_VALUE);
    const String text = detail::alphabetOrDefault(alphabet);
    std::int8_t value = 0;
    for (const char16_t unit : text.view())
        m_values[unit] = value++;
}

std::int32_t AlphaNumInputStream::read(signed char* target, std::int32_t length)
{
    if (length < 1)
        return -1;
    detail::requireUnits(target);
    InputStream& in = source();
    std::int32_t done = 0;
    while (done < length) {
        if (m_step == 0)
            done += readGroups(m_values, in, target + done, length - done);
        if (done == length)
            break;
        const int unit = in.read();
        if (unit < 0) {
            if (m_step > 0) {
                target[done++] = static_cast<signed char>(m_partial);
                m_step = 0;
                m_partial = 0;
            }
            break;
        }
        const int value // NOLINTNEXTLINE(bugprone-signed-char-misuse, cert-str34-c): -1 is meant
            = static_cast<std::size_t>(unit) < m_values.size() ? m_values[static_cast<std::size_t>(unit)] : NO_VALUE;
        if (value < 0)
            throw text::charset::InvalidCharacterException(u"Invalid AlphaNum character");

        const Step& step = STEPS[m_step];
        m_step = (m_step + 1) % std::size(STEPS);
        if (step.completes) {
            target[done++] = static_cast<signed char>(m_partial | value >> step.complete);
            m_partial = 0;
        }
        m_partial = static_cast<std::uint8_t>(m_partial | value << step.keep);
    }
    return done > 0 ? done : -1;
}

int AlphaNumInputStream::read()
{
    return InputStream::read();
}

std::int32_t AlphaNumInputStream::skip(std::int32_t count)
{
    return InputStream::skip(count);
}

std::int32_t AlphaNumInputStream::available()
{
    return static_cast<std::int32_t>(std::int64_t {source().available()} * 5 / 8);
}

} // namespace vx::io
