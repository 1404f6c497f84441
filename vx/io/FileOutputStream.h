#pragma once

#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/io/OutputStream.h"
#include "vx/ipc/SemaphoreR.h"
#include "vx/sync/Mutex.h"
#include "vxsys/File.h"

#include <atomic>
#include <cstdint>

namespace vx::util {
class FilePath;
}

namespace vx::io {

namespace detail {
class EntryNote;
struct GuardedFile;
} // namespace detail

/// Writes bytes to a file, or to anything else that a system handle refers to. It keeps no buffer: each `write` reaches
/// the system at once. Failures are ResultExceptions.
///
/// With APPEND each `write` is one system call that also finds the end of the file. So writes never mix, whichever
/// programs append to the file, also those of other users and those that use another path to it. With APPEND or LOCK a
/// semaphore excludes all other streams, in all processes of the user, that were opened with the same path.
///
/// A process that is killed in a `write` may leave a part of it at the end of the file. The next stream that takes the
/// semaphore truncates the file to remove that part, if all its bytes are proved to be from the killed writer.
/// Otherwise nothing is removed, and the next `write` begins on a new line. A `write` that fails in the middle is
/// removed as well.
///
/// With APPEND, LOCK or KEEPCLOSED threads may share a stream. A child process by `fork` does not hold what its parent
/// holds.
class VX_API FileOutputStream : public OutputStream {
public:
    /// Opened positioned at its end.
    static constexpr unsigned int ATEND = 0x1;
    /// Each write appends to the file, under the semaphore.
    static constexpr unsigned int APPEND = 0x2;
    /// Truncated when it is first opened.
    static constexpr unsigned int TRUNC = 0x4;
    /// Closed between operations, and flushed to disk before.
    static constexpr unsigned int KEEPCLOSED = 0x8;
    /// Each write is made under the semaphore, at the current position.
    static constexpr unsigned int LOCK = 0x10;

    /// The file is created if it is missing, with the mode 0700 less the mask of the process. An empty path throws InvalidPathException.
    FileOutputStream(const String& path, unsigned int mode);
    FileOutputStream(const util::FilePath& path, unsigned int mode);
    FileOutputStream(const String& path, int mode)
        : FileOutputStream(path, static_cast<unsigned int>(mode))
    {
    }
    FileOutputStream(const util::FilePath& path, int mode)
        : FileOutputStream(path, static_cast<unsigned int>(mode))
    {
    }
    /// ATEND for true, TRUNC for false. Neither locks out other writers.
    FileOutputStream(const String& path, bool append);
    FileOutputStream(const util::FilePath& path, bool append);
    /// An owned handle is closed with the stream.
    FileOutputStream(std::uint32_t handle, bool owned);
    FileOutputStream(const FileOutputStream&) = delete;
    FileOutputStream& operator=(const FileOutputStream&) = delete;
    ~FileOutputStream() noexcept(false) override;

    // OutputStream
    using OutputStream::write;
    /// Writes everything, in as many system calls as needed.
    void write(const signed char* bytes, std::int32_t length) override;
    /// Flushes to disk. Does nothing for a closed file.
    void flush() override;
    /// A named file can be opened again. A failure is silent.
    void close() override;

    /// As `write`. But with APPEND, bytes that end with a line feed begin on a new line: if the file ends in the middle of
    /// a line, as a killed program may leave it, a line feed is written first. The file is not read if the last write of a
    /// stream with its path was a line, and nothing was added since. A file that cannot be opened for reading is taken as
    /// it is. For encodings in which the byte 10 is always a line feed, so not for UTF-16 and UTF-32.
    void writeLine(const signed char* bytes, std::int32_t length);

    /// False with KEEPCLOSED between operations, although the stream works.
    virtual short is_open() const;
    /// Opens a named file again, without truncating it; with KEEPCLOSED until the next `write` or `getSize`.
    virtual void open();
    /// The size of the file in bytes.
    virtual std::int64_t getSize();

    /// `VX_FILE_INVALID_HANDLE` with KEEPCLOSED, and once closed.
    std::uint32_t getHandle();
    unsigned int getMode() const { return m_mode; }

    /// Lock the file for several writes of the calling thread, and unlock it. They do nothing without APPEND and LOCK.
    /// Pairs may nest.
    void wait();
    void signal();

private:
    static std::uint32_t openFile(const String& path, unsigned int mode);

    static constexpr std::int64_t NO_POSITION = -1;

    bool has(unsigned int bits) const { return (m_mode & bits) != 0; }
    void init(const String& path);
    void put(const signed char* bytes, std::int32_t length, bool isLine);
    void openAgain();
    void setHandle(std::uint32_t handle);
    void closeHandle() noexcept;
    detail::GuardedFile guarded();
    /// The position of the stream, if that is the end of the file.
    std::int64_t positionAtEnd() const;
    void writeEntry(const signed char* bytes, std::int32_t length, std::int64_t end);
    void writeAll(const signed char* bytes, std::int32_t length, detail::EntryNote* note);

    String m_path;
    std::atomic<std::uint32_t> m_handle; ///< `is_open` reads it without the mutex
    bool m_owned;
    unsigned int m_mode;
    Reference<ipc::SemaphoreR> m_semaphore;
    Reference<sync::Mutex> m_mutex;
    VXFileIdentity m_identity {}; ///< of a file with a semaphore
    bool m_isRegular = false; ///< set for a file that this object opened
};

} // namespace vx::io
