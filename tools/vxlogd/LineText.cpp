#include "LineText.h"

#include "common/LossyReader.h"

#include <vx/String.h>

#include <algorithm>
#include <span>

namespace vxlogd {

namespace {

char16_t readable(char16_t unit)
{
    constexpr char16_t REPLACEMENT = 0xFFFD;
    constexpr char16_t PICTURES = 0x2400; // a picture for each control character of ASCII
    constexpr char16_t DELETE = 0x7F;
    constexpr char16_t PICTURE_OF_DELETE = 0x2421;

    if (unit == u'\t')
        return unit;
    if (unit < u' ')
        return static_cast<char16_t>(PICTURES + unit);
    if (unit == DELETE)
        return PICTURE_OF_DELETE;
    const bool isControl = unit > DELETE && unit < 0xA0;
    const bool isSeparator = unit == 0x2028 || unit == 0x2029;
    const bool isDirection = unit == 0x061C || unit == 0x200E || unit == 0x200F || (unit >= 0x202A && unit <= 0x202E)
        || (unit >= 0x2066 && unit <= 0x2069);
    return isControl || isSeparator || isDirection ? REPLACEMENT : unit;
}

} // namespace

std::string_view readableText(std::string_view bytes, std::string& converted)
{
    if (std::ranges::all_of(bytes, [](char byte) { return (byte >= ' ' && byte < 0x7F) || byte == '\t'; }))
        return bytes;
    std::u16string text;
    vxtools::LossyDecoder(u"UTF-8").decode(
        std::span(reinterpret_cast<const signed char*>(bytes.data()), bytes.size()), true, text);
    std::ranges::transform(text, text.begin(), readable);
    converted = vx::String(std::u16string_view(text)).toUtf8();
    return converted;
}

} // namespace vxlogd
