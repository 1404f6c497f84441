#pragma once

#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/io/OutputStream.h"

#include <cstdint>
#include <functional>

namespace vx {
class Exception;
}

namespace vx::io {

/// When a `RotatingFileStream` starts a new file, and which older files are kept.
struct Rotation {
    enum class Every { NEVER, HOUR, DAY };

    /// The largest size of a file in bytes; only a single larger entry may exceed it. 0 means no limit.
    std::int64_t mostBytes = 0;
    /// Starts a new file each hour or each day, in local time or in UTC.
    Every every = Every::NEVER;
    bool isUtc = false;

    /// How many older files are kept, and how many bytes in all of them. The oldest ones are removed. 0 means no limit.
    int keepFiles = 0;
    std::int64_t keepBytes = 0;

    /// Called after a rotation with the newest file that no process writes to any more: the second youngest of the
    /// older ones. It may compress that file to one whose name has another extension added, and remove it. It is called
    /// on the thread that writes. An Exception that it throws is passed to `onFailure`.
    std::function<void(const String& path)> onClosed {};
    /// Called if a rotation or `onClosed` fails. The entry is in the file nevertheless. After a second, the next entry
    /// tries a failed rotation again.
    std::function<void(const Exception& failure)> onFailure {};

    /// The mode of each file that the stream creates, whatever the mask of the process is. 0 means 0700, less the mask.
    std::int32_t access = 0;
};

/// Appends entries to a file that is replaced by a new one from time to time. Each `write` is one entry, which is
/// written to one file as a whole. Any number of processes may write to one path, if they use the same path and the
/// same `Rotation`. After a rotation by one of them, all continue in the new file.
///
/// An entry that ends with a line feed begins on a new line. If the file ends in the middle of a line, which another
/// program has left there, a line feed is written first.
///
/// If the path is a symbolic link, a rotation renames the link, and the new file is beside it. Give such a stream the path of
/// the file itself.
///
/// The names of older files end with a number: "app.log.000001" is older than "app.log.000002". If a process is killed
/// at any moment, the next writer can continue the log.
///
/// If processes of several users write to the path, entries are still written as a whole. But two users that rotate at
/// the same moment may start one file too many. Several threads may share a stream.
class VX_API RotatingFileStream : public OutputStream {
public:
    /// Opens the file, or creates it. Throws as `FileOutputStream` does, and ResultException with
    /// RESULT_INVALID_ARGUMENT for a negative limit.
    RotatingFileStream(const String& path, Rotation rotation);
    RotatingFileStream(const RotatingFileStream&) = delete;
    RotatingFileStream& operator=(const RotatingFileStream&) = delete;
    ~RotatingFileStream() noexcept(false) override;

    // OutputStream
    using OutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override;
    /// Flushes to disk, also what is in files that this process has closed.
    void flush() override;
    /// The next `write` opens the file again.
    void close() override;

private:
    class Core;

    const Reference<Core> m_core;
};

} // namespace vx::io
