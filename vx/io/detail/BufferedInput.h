#pragma once

#include "vx/detail/RawArray.h"
#include "vx/io/detail/StreamChecks.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>
#include <utility>

namespace vx::io::detail {

/// The common implementation of BufferedInputStream and BufferedReader. It works on their fields.
template <class Stream>
struct BufferedInput {
    using Unit = typename Stream::Unit;

    static constexpr std::int32_t MARK_OVERRUN = -2;

    static bool isEmpty(const Stream& self) { return self.m_position == self.m_count; }
    static void fillBuffer(Stream& self);
    static int read(Stream& self);
    static std::int32_t read(Stream& self, Unit* target, std::int32_t length);
    static std::int32_t skip(Stream& self, std::int32_t count);

    static std::int32_t available(Stream& self)
    {
        self.ensureOpen();
        return saturated(std::int64_t {opened(self.m_source).available()} + self.m_count - self.m_position);
    }

    static void mark(Stream& self, std::int32_t limit)
    {
        self.ensureOpen();
        self.m_markLimit = limit;
        self.m_markPosition = self.m_position;
    }
    static void reset(Stream& self);

    /// The units in the buffer, none if it is closed. Whoever uses them instead of calling `read` skips them afterwards.
    static std::span<const Unit> buffered(const Stream& self)
    {
        if (self.m_buffer == nullptr)
            return {};
        return {self.m_buffer.get() + self.m_position, static_cast<std::size_t>(self.m_count - self.m_position)};
    }
    static void skipBuffered(Stream& self, std::size_t count) { self.m_position += static_cast<std::int32_t>(count); }

    static void close(Stream& self)
    {
        self.m_buffer.reset();
        if (self.m_source != nullptr)
            self.m_source->close();
    }

private:
    static constexpr std::size_t bytesOf(std::int32_t units) { return static_cast<std::size_t>(units) * sizeof(Unit); }

    /// Moves the units from the mark on to the start of a buffer that has room for the whole limit.
    static void keepMarked(Stream& self, std::int32_t kept);
    static std::int32_t readPastBuffer(Stream& self, Unit* target, std::int32_t done, std::int32_t length);
};

template <class Stream>
inline void BufferedInput<Stream>::fillBuffer(Stream& self)
{
    std::int32_t kept = 0;
    if (self.m_markPosition >= 0) {
        kept = self.m_position - self.m_markPosition;
        if (kept < self.m_markLimit) {
            keepMarked(self, kept);
        } else {
            self.m_markPosition = MARK_OVERRUN;
            kept = 0;
        }
    }
    const std::int32_t room = self.m_bufferSize - kept;
    const std::int32_t got = checkedCount(opened(self.m_source).read(self.m_buffer.get() + kept, room), room);
    if (got > 0) {
        self.m_position = kept;
        self.m_count = kept + got;
    }
}

template <class Stream>
inline int BufferedInput<Stream>::read(Stream& self)
{
    self.ensureOpen();
    if (isEmpty(self)) {
        self.fillBuffer();
        if (isEmpty(self))
            return -1;
    }
    return static_cast<std::make_unsigned_t<Unit>>(self.m_buffer[self.m_position++]);
}

template <class Stream>
inline std::int32_t BufferedInput<Stream>::read(Stream& self, Unit* target, std::int32_t length)
{
    self.ensureOpen();
    if (length < 1)
        return 0;
    requireUnits(target);

    std::int32_t done = 0;
    while (done < length) {
        if (isEmpty(self)) {
            if (done > 0 && opened(self.m_source).available() < 1)
                return done; // a read that has units already does not block again
            if (length - done >= self.m_bufferSize && self.m_markPosition < 0)
                return readPastBuffer(self, target, done, length);
            self.fillBuffer();
            if (isEmpty(self))
                return done > 0 ? done : -1;
        }
        const std::int32_t step = std::min(length - done, self.m_count - self.m_position);
        std::memcpy(target + done, self.m_buffer.get() + self.m_position, bytesOf(step));
        self.m_position += step;
        done += step;
    }
    return done;
}

template <class Stream>
inline std::int32_t BufferedInput<Stream>::skip(Stream& self, std::int32_t count)
{
    self.ensureOpen();
    std::int32_t done = 0;
    while (done < count) {
        if (isEmpty(self)) {
            self.fillBuffer();
            if (isEmpty(self))
                break;
        }
        const std::int32_t step = std::min(count - done, self.m_count - self.m_position);
        self.m_position += step;
        done += step;
    }
    return done;
}

template <class Stream>
inline void BufferedInput<Stream>::reset(Stream& self)
{
    self.ensureOpen();
    if (self.m_markPosition < 0)
        throwIo(self.m_markPosition == MARK_OVERRUN ? u"mark invalid" : u"stream not marked");
    self.m_position = self.m_markPosition;
}

template <class Stream>
inline void BufferedInput<Stream>::keepMarked(Stream& self, std::int32_t kept)
{
    const Unit* marked = self.m_buffer.get() + self.m_markPosition;
    if (self.m_markLimit > self.m_bufferSize) {
        auto grown = vx::detail::makeRawArray<Unit>(self.m_markLimit);
        std::memcpy(grown.get(), marked, bytesOf(kept));
        self.m_buffer = std::move(grown);
        self.m_bufferSize = self.m_markLimit;
    } else {
        std::memmove(self.m_buffer.get(), marked, bytesOf(kept));
    }
    self.m_markPosition = 0;
    self.m_position = kept;
    self.m_count = kept;
}

template <class Stream>
inline std::int32_t BufferedInput<Stream>::readPastBuffer(
    Stream& self, Unit* target, std::int32_t done, std::int32_t length)
{
    const std::int32_t wanted = length - done;
    const std::int32_t got = checkedCount(opened(self.m_source).read(target + done, wanted), wanted);
    if (got > 0)
        return done + got;
    return done > 0 ? done : got;
}

} // namespace vx::io::detail
