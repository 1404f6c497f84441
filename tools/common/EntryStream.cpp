#include "EntryStream.h"

#include <vx/Exception.h>
#include <vx/Result.h>

#include <limits>
#include <utility>

namespace vxtools {

EntryStream::EntryStream(vx::io::FileOutputStream* file)
    : m_file(file)
{
}

void EntryStream::write(const signed char* bytes, std::int32_t length)
{
    if (length > 0)
        m_entry.insert(m_entry.end(), bytes, bytes + length);
}

void EntryStream::flush()
{
    if (m_entry.empty())
        return;
    if (m_entry.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        throw vx::ResultException(vx::RESULT_OUT_OF_MEMORY, u"entry too long");
    try {
        m_file->write(m_entry.data(), static_cast<std::int32_t>(m_entry.size()));
    } catch (...) {
        m_entry.clear();
        throw;
    }
    m_entry.clear();
}

} // namespace vxtools
