#pragma once

#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/io/FileOutputStream.h"
#include "vx/io/OutputStream.h"
#include "vx/sync/Mutex.h"
#include "vxsys/File.h"

#include <cstdint>
#include <functional>

namespace vx {
class Exception;
}

namespace vx::io {

/// When a `RotatingFileStream` begins a new file, and what becomes of the older ones.
struct Rotation {
    enum class Every { NEVER, HOUR, DAY };

    /// The file gets no larger than this, unless a single entry is. 0 is no limit.
    std::int64_t mostBytes = 0;
    /// Entries of one hour or one day stand in files of their own. Hours and days are those of local time, or of UTC.
    Every every = Every::NEVER;
    bool isUtc = false;

    /// How many older files are kept, and how many bytes in all of them; the oldest are removed. 0 is no limit.
    int keepFiles = 0;
    std::int64_t keepBytes = 0;

    /// Called after a rotation with the newest file that is surely no longer written to: the second youngest of the older
    /// ones. It may compress that file, into a file whose name has one more extension, and remove it. It is called on the
    /// thread that writes; an Exception that it throws is passed to `onFailure`.
    std::function<void(const String& path)> onClosed {};
    /// Called when a rotation or `onClosed` fails. The entry is in the file nevertheless. A failed rotation is tried again
    /// with a later entry, after a second.
    std::function<void(const Exception& failure)> onFailure {};
};

/// Appends entries to a file that is replaced by a new one from time to time. Each `write` is an entry, and stands in one
/// file. Any number of processes may write to one path: all of them go on in the new file, whoever began it. They have to
/// use the same path and the same `Rotation`.
///
/// The older files are named with a number that counts up: "app.log.000001" is older than "app.log.000002". A process
/// that is killed at any moment leaves a log that the next writer goes on with.
///
/// The file of processes of other users gets no torn entries either, but two users who rotate at the same moment may
/// begin one file too many. Several threads may share a stream.
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
    /// Flushes to disk, also what stands in files that this process has closed.
    void flush() override;
    /// The next `write` opens the file again.
    void close() override;

private:
    void follow() VX_REQUIRES(m_lock);
    bool isDue(std::int32_t length) const VX_REQUIRES(m_lock);
    std::int64_t periodOf(std::int64_t seconds) const;
    String rotate() VX_REQUIRES(m_lock);
    void reportTo(const std::function<void()>& work);

    const String m_path;
    const Rotation m_rotation;
    sync::Mutex m_lock;
    const Reference<FileOutputStream> m_file;
    VXFileStatus m_status VX_GUARDED_BY(m_lock) {}; ///< of the file, when the semaphore was taken
    std::int64_t m_nextTry VX_GUARDED_BY(m_lock) = 0; ///< of a rotation that failed, in milliseconds of a clock
};

} // namespace vx::io
