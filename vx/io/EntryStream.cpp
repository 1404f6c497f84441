#include "vx/io/EntryStream.h"

#include "vx/Exceptions.h"
#include "vx/io/FileOutputStream.h"
#include "vx/io/detail/StreamChecks.h"

#include <algorithm>
#include <limits>
#include <typeinfo>

namespace vx::io {

namespace {

/// Storage beyond this is freed after the entry that needed it.
constexpr std::size_t KEPT_CAPACITY = 1 << 20;

/// A class that is derived from `FileOutputStream` may override `write`.
void writeEntry(OutputStream& sink, const signed char* bytes, std::int32_t length)
{
    if (typeid(sink) == typeid(FileOutputStream))
        static_cast<FileOutputStream&>(sink).writeLine(bytes, length);
    else
        sink.write(bytes, length);
}

} // namespace

EntryStream::EntryStream(OutputStream* sink, bool flushesSink)
    : m_sink(sink)
    , m_flushesSink(flushesSink)
{
}

EntryStream::~EntryStream() = default;

void EntryStream::write(const signed char* bytes, std::int32_t length)
{
    if (length < 1)
        return;
    detail::requireUnits(bytes);
    if (m_isRefused) {
        m_entry.clear();
        m_isRefused = false;
    }
    if (m_entry.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max() - length))
        throw OutOfMemoryException();
    m_entry.insert(m_entry.end(), bytes, bytes + length);
}

void EntryStream::flush()
{
    OutputStream& sink = detail::opened(m_sink);
    if (!m_entry.empty()) {
        m_isRefused = true;
        writeEntry(sink, m_entry.data(), static_cast<std::int32_t>(m_entry.size()));
        m_isRefused = false;
        m_entry.clear();
        if (m_entry.capacity() > KEPT_CAPACITY)
            m_entry = {};
    }
    if (m_flushesSink)
        sink.flush();
}

void EntryStream::close()
{
    if (m_sink != nullptr)
        m_sink->close();
}

void EntryStream::takeBack(std::int64_t count)
{
    const auto size = static_cast<std::int64_t>(m_entry.size());
    m_entry.resize(static_cast<std::size_t>(size - std::clamp<std::int64_t>(count, 0, size)));
}

} // namespace vx::io
