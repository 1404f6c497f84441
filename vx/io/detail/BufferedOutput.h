#pragma once

#include "vx/io/detail/StreamChecks.h"

#include <cstdint>
#include <cstring>

namespace vx::io::detail {

/// The common implementation of BufferedOutputStream and BufferedWriter. It works on their fields.
template <class Stream>
struct BufferedOutput {
    using Unit = typename Stream::Unit;

    static void flushBuffer(Stream& self);
    static void write(Stream& self, Unit unit);
    static void write(Stream& self, const Unit* units, std::int32_t length);

    /// The place of `count` units that count as written. Null if the buffer has no room or is closed, or if `write` would
    /// pass them on at once.
    static Unit* extend(Stream& self, std::int32_t count)
    {
        if (self.m_buffer == nullptr || count >= self.m_bufferSize || count > self.m_bufferSize - self.m_count)
            return nullptr;
        self.m_count += count;
        return self.m_buffer.get() + self.m_count - count;
    }

    static void flush(Stream& self)
    {
        self.ensureOpen();
        self.flushBuffer();
        opened(self.m_sink).flush();
    }

    static void close(Stream& self)
    {
        self.m_buffer.reset();
        if (self.m_sink != nullptr)
            self.m_sink->close();
    }
};

template <class Stream>
inline void BufferedOutput<Stream>::flushBuffer(Stream& self)
{
    if (self.m_count < 1)
        return;
    opened(self.m_sink).write(self.m_buffer.get(), self.m_count);
    self.m_count = 0;
}

template <class Stream>
inline void BufferedOutput<Stream>::write(Stream& self, Unit unit)
{
    self.ensureOpen();
    if (self.m_count >= self.m_bufferSize)
        self.flushBuffer();
    self.m_buffer[self.m_count++] = unit;
}

template <class Stream>
inline void BufferedOutput<Stream>::write(Stream& self, const Unit* units, std::int32_t length)
{
    self.ensureOpen();
    if (length < 1)
        return;
    requireUnits(units);

    if (length >= self.m_bufferSize) {
        self.flushBuffer();
        opened(self.m_sink).write(units, length);
        return;
    }
    if (length > self.m_bufferSize - self.m_count)
        self.flushBuffer();
    std::memcpy(self.m_buffer.get() + self.m_count, units, static_cast<std::size_t>(length) * sizeof(Unit));
    self.m_count += length;
}

} // namespace vx::io::detail
