#include "TextPlace.h"

#include <vxsys/Surrogate.h>

#include <algorithm>

namespace vxconv {

void TextPlace::advance(std::u16string_view text) noexcept
{
    m_line += std::count(text.begin(), text.end(), u'\n');
    if (const std::size_t end = text.rfind(u'\n'); end != text.npos) {
        m_column = 1;
        text.remove_prefix(end + 1);
    }
    // A pair is counted at its second half. After a piece that ends between the two halves, the position is still
    // before the pair.
    m_column
        += static_cast<std::int64_t>(text.size()) - std::count_if(text.begin(), text.end(), vxsys::isLead<char16_t>);
}

std::size_t SurrogatePairs::findLone(std::u16string_view text) noexcept
{
    constexpr std::size_t BLOCK = 32;
    for (std::size_t index = 0; index < text.size();) {
        if (!m_isOpen && text.size() - index >= BLOCK) {
            unsigned surrogates = 0; // no branch, so that the compiler vectorises this
            for (std::size_t offset = 0; offset < BLOCK; ++offset)
                surrogates += vxsys::isSurrogate(text[index + offset]) ? 1U : 0U;
            if (surrogates == 0) {
                index += BLOCK;
                continue;
            }
        }
        for (const std::size_t end = std::min(text.size(), index + BLOCK); index < end; ++index) {
            if (vxsys::isTrail(text[index]) != m_isOpen)
                return index;
            m_isOpen = vxsys::isLead(text[index]);
        }
    }
    return text.npos;
}

} // namespace vxconv
