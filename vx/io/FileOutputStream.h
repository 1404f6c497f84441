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
struct GuardedFile;
}

/// Bytes into a file, or into whatever a handle of the system stands for, each write at once and without a buffer. Failures
/// are ResultExceptions.
///
/// With APPEND or LOCK each `write` is whole among those of all streams, in all processes of the user, that name the file by
/// the same text. So it stays when a writer dies: where the end of the file shows that its last write was torn, the next
/// one to take the lock cuts it off. A write at the end of the file that fails in the middle is cut off as well. With
/// APPEND, LOCK or KEEPCLOSED threads may share a stream.
class VX_API FileOutputStream : public OutputStream {
public:
    /// Opened positioned at its end.
    static constexpr unsigned int ATEND = 0x1;
    /// Each write first moves to the end of the file, under the semaphore.
    static constexpr unsigned int APPEND = 0x2;
    /// Cut to nothing at the first opening.
    static constexpr unsigned int TRUNC = 0x4;
    /// Closed between operations, and flushed to disk before.
    static constexpr unsigned int KEEPCLOSED = 0x8;
    /// Each write is made under the semaphore, where the stream stands.
    static constexpr unsigned int LOCK = 0x10;

    /// The file is made when missing. An empty path throws InvalidPathException.
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
    /// Writes at the end where `append` is set, else into a file cut to nothing. Not APPEND: others are not kept out.
    FileOutputStream(const String& path, bool append);
    FileOutputStream(const util::FilePath& path, bool append);
    /// An owned handle is closed with the stream.
    FileOutputStream(std::uint32_t handle, bool owned);
    FileOutputStream(const FileOutputStream&) = delete;
    FileOutputStream& operator=(const FileOutputStream&) = delete;
    ~FileOutputStream() noexcept(false) override;

    // OutputStream
    using OutputStream::write;
    /// All of it, in as many calls of the system as it takes.
    void write(const signed char* bytes, std::int32_t length) override;
    /// To disk. Nothing happens on a closed file.
    void flush() override;
    /// A named file can be opened again. A failure is silent.
    void close() override;

    /// False with KEEPCLOSED between operations, although the stream works.
    virtual short is_open() const;
    /// Opens a named file again, without cutting it; with KEEPCLOSED until the next `write` or `getSize`.
    virtual void open();
    /// Bytes in the file.
    virtual std::int64_t getSize();

    /// `VX_FILE_INVALID_HANDLE` with KEEPCLOSED, and once closed.
    std::uint32_t getHandle();
    unsigned int getMode() const { return m_mode; }

    /// Hold the file across several writes of the calling thread, and release it; nothing without APPEND and LOCK. Pairs
    /// may nest.
    void wait();
    void signal();

private:
    static std::uint32_t openFile(const String& path, unsigned int mode);

    static constexpr std::int64_t NO_POSITION = -1;

    bool has(unsigned int bits) const { return (m_mode & bits) != 0; }
    void init(const String& path);
    void openAgain();
    void setHandle(std::uint32_t handle);
    void closeHandle() noexcept;
    detail::GuardedFile guarded();
    /// Where the stream stands, if that is the end of the file.
    std::int64_t positionAtEnd() const;
    void writeEntry(const signed char* bytes, std::int32_t length, std::int64_t end);
    void writeAll(const signed char* bytes, std::int32_t length);

    String m_path;
    std::atomic<std::uint32_t> m_handle; ///< `is_open` looks at it without the mutex
    bool m_owned;
    unsigned int m_mode;
    Reference<ipc::SemaphoreR> m_semaphore;
    Reference<sync::Mutex> m_mutex;
    VXFileIdentity m_identity {}; ///< of a file with a semaphore
    bool m_isRegular = false; ///< known of a file that was opened here
};

} // namespace vx::io
