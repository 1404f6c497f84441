#include "vxsys/detail/Utf.h"

#include "vxsys/Surrogate.h"

#include <cstdint>

namespace vxsys::detail {

namespace {

constexpr char continuation(std::uint32_t codePoint, unsigned shift) noexcept
{
    return static_cast<char>(0x80 | (codePoint >> shift & 0x3F));
}

/// The forms of UTF-8 by their first byte. `least` is the lowest code point that needs the form.
struct Form {
    std::uint8_t mask;
    std::uint8_t lead;
    std::uint8_t more;
    std::uint32_t least;
};

constexpr Form FORMS[] = {
    {0x80, 0x00, 0, 0x0},
    {0xE0, 0xC0, 1, 0x80},
    {0xF0, 0xE0, 2, 0x800},
    {0xF8, 0xF0, 3, FIRST_BEYOND_BASIC_PLANE},
};

const Form* formOf(std::uint8_t lead) noexcept
{
    for (const Form& form : FORMS) {
        if ((lead & form.mask) == form.lead)
            return &form;
    }
    return nullptr;
}

constexpr std::size_t bytesFor(std::uint32_t codePoint) noexcept
{
    return 1 + (codePoint >= FORMS[1].least) + (codePoint >= FORMS[2].least) + (codePoint >= FORMS[3].least);
}

} // namespace

Conversion utf16ToUtf8(std::u16string_view source, char* target, std::size_t size) noexcept
{
    std::size_t written = 0;
    for (std::size_t i = 0; i < source.size(); ++i) {
        std::uint32_t value = source[i];
        if (isSurrogate(value)) {
            if (isTrail(value) || ++i == source.size() || !isTrail(source[i]))
                return {Outcome::badText, written};
            value = codePoint(source[i - 1], source[i]);
        }

        const std::size_t bytes = bytesFor(value);
        if (size - written < bytes)
            return {Outcome::noRoom, written};
        unsigned shift = 6 * static_cast<unsigned>(bytes - 1);
        target[written++] = static_cast<char>(FORMS[bytes - 1].lead | value >> shift);
        while (shift != 0) {
            shift -= 6;
            target[written++] = continuation(value, shift);
        }
    }
    return {Outcome::done, written};
}

Conversion utf8ToUtf16(std::string_view source, char16_t* target, std::size_t size) noexcept
{
    std::size_t written = 0;
    for (std::size_t i = 0; i < source.size();) {
        const auto lead = static_cast<std::uint8_t>(source[i++]);
        const Form* form = formOf(lead);
        if (form == nullptr || source.size() - i < form->more)
            return {Outcome::badText, written};
        std::uint32_t value = lead & ~form->mask & 0xFFU;
        for (unsigned rest = form->more; rest != 0; --rest) {
            const auto next = static_cast<std::uint8_t>(source[i++]);
            if ((next & 0xC0) != 0x80)
                return {Outcome::badText, written};
            value = value << 6 | (next & 0x3FU);
        }
        if (value < form->least || value > LAST_CODE_POINT || isSurrogate(value))
            return {Outcome::badText, written};

        const bool isPair = value >= FIRST_BEYOND_BASIC_PLANE;
        if (size - written < 1U + isPair)
            return {Outcome::noRoom, written};
        if (isPair) {
            target[written++] = leadOf(value);
            target[written++] = trailOf(value);
        } else {
            target[written++] = static_cast<char16_t>(value);
        }
    }
    return {Outcome::done, written};
}

} // namespace vxsys::detail
