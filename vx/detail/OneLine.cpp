#include "vx/detail/OneLine.h"

#include "vxsys/Surrogate.h"

#include <cstddef>
#include <string>

namespace vx::detail {

String foreignText(std::string_view bytes)
{
    std::string decodable = std::string(bytes) + ' '; // after which no character is incomplete at the end
    for (std::size_t at = decodable.find('\xED'); at != decodable.npos; at = decodable.find('\xED', at + 1)) {
        if (static_cast<unsigned char>(decodable[at + 1]) >= 0xA0) // an encoded surrogate
            decodable[at] = '\xFF';
    }
    const String text {std::string_view(decodable)};
    return text.substring(0, text.getLength() - 1);
}

String onOneLine(std::u16string_view text)
{
    std::u16string line(text);
    for (std::size_t index = 0; index < text.size(); ++index) {
        const char16_t unit = text[index];
        if (unit < u' ' || (unit >= 0x7F && unit < 0xA0) || unit == u'\u2028' || unit == u'\u2029')
            line[index] = u' ';
        else if (vxsys::isLoneSurrogate(text, index))
            line[index] = u'\uFFFD';
    }
    line.erase(line.find_last_not_of(u' ') + 1);
    return String(std::u16string_view(line));
}

} // namespace vx::detail
