#include "CheckedInput.h"

#include "Texts.h"
#include "common/Failure.h"

#include <vx/io/FileInputStream.h>

namespace vxconv {

using namespace vxtools;

CheckedInput::CheckedInput(
    const Input& input, std::u16string_view encoding, std::int64_t start, vxtools::Progress& progress)
    : FilterInputStream(new vx::io::FileInputStream(static_cast<std::uint32_t>(input.descriptor()), false))
    , m_name(input.name())
    , m_progress(progress)
    , m_isUtf8(encoding == u"UTF-8")
    , m_start(start)
{
    if (encoding.starts_with(u"UTF-16"))
        m_unitSize = 2;
    else if (encoding.starts_with(u"UTF-32"))
        m_unitSize = 4;
}

std::int32_t CheckedInput::read(signed char* target, std::int32_t length)
{
    const std::int32_t got = FilterInputStream::read(target, length);
    if (got < 0) {
        checkEnd();
        return got;
    }
    if (m_isUtf8) {
        if (const std::int64_t fault = m_utf8.findFault(target, got); fault != Utf8Check::NONE)
            failAt(fault, vxconv::NOT_UTF_8());
    }
    m_position += got;
    m_progress.update(m_start + m_position);
    return got;
}

void CheckedInput::checkEnd() const
{
    const std::int64_t left = m_isUtf8 ? m_utf8.incomplete() : m_position % m_unitSize;
    if (left > 0)
        failAt(m_position - left, INCOMPLETE());
}

void CheckedInput::failAt(std::int64_t place, const Text& why) const
{
    throw Failure(m_name, AT_BYTE(m_start + place, why));
}

} // namespace vxconv
