#include "vx/io/FileOutputStream.h"

#include "vx/Exceptions.h"
#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vx/io/detail/EntryNote.h"
#include "vx/io/detail/OpenFile.h"
#include "vx/sync/ScopedWait.h"
#include "vx/util/FilePath.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace vx::io {

namespace {

/// The name of the semaphore for a file: its path with "/".
std::vector<char> semaphoreName(const String& path)
{
    constexpr std::size_t ROOM = 10;
    constexpr std::size_t BYTES_PER_UNIT = 3; // at most, in UTF-8
    const std::size_t size = path.view().size() * BYTES_PER_UNIT + ROOM;
    if (size > std::numeric_limits<std::int32_t>::max())
        throwResult(RESULT_NAME_TOO_LONG);

    std::vector<char> name(size);
    if (VXUnicodeToAnsi(path.getData(), path.getLength(), name.data(), static_cast<std::int32_t>(size)) < 1)
        throwResult(RESULT_INVALID_NAME);
    std::replace(name.begin(), name.end(), '\\', '/');
    return name;
}

void requirePath(const String& path)
{
    if (path.view().empty())
        throwDuring(u"open", u"a file with an empty path", InvalidPathException());
}

/// Closes a file at the end of the block.
template <class Close>
class [[nodiscard]] ScopedClose {
public:
    explicit ScopedClose(Close close)
        : m_close(close)
    {
    }
    ~ScopedClose() { m_close(); }
    ScopedClose(const ScopedClose&) = delete;
    ScopedClose& operator=(const ScopedClose&) = delete;

private:
    Close m_close;
};

} // namespace

FileOutputStream::FileOutputStream(const String& path, unsigned int mode)
    : m_path(path)
    , m_handle(VX_FILE_INVALID_HANDLE)
    , m_owned(true)
    , m_mode(mode)
{
    init(m_path);
}

FileOutputStream::FileOutputStream(const util::FilePath& path, unsigned int mode)
    : FileOutputStream(path.toString(), mode)
{
}

FileOutputStream::FileOutputStream(const String& path, bool append)
    : FileOutputStream(path, append ? ATEND : TRUNC)
{
}

FileOutputStream::FileOutputStream(const util::FilePath& path, bool append)
    : FileOutputStream(path.toString(), append)
{
}

FileOutputStream::FileOutputStream(std::uint32_t handle, bool owned)
    : m_handle(handle)
    , m_owned(owned)
    , m_mode(0)
{
}

FileOutputStream::~FileOutputStream() noexcept(false)
{
    closeHandle();
}

void FileOutputStream::write(const signed char* bytes, std::int32_t length)
{
    put(bytes, length, false);
}

void FileOutputStream::writeLine(const signed char* bytes, std::int32_t length)
{
    put(bytes, length, detail::isLine(bytes, length));
}

void FileOutputStream::put(const signed char* bytes, std::int32_t length, bool isLine)
{
    if (!m_mutex) // no other writer to lock out, and nothing to close
        return writeAll(bytes, length, nullptr);

    const sync::ScopedWait mutex(m_mutex.get());
    const sync::ScopedWait semaphore(m_semaphore.get());
    const ScopedClose closing([this] {
        if (has(KEEPCLOSED))
            closeHandle();
    });
    if (has(KEEPCLOSED))
        openAgain();
    const std::int64_t lineEnd = m_semaphore ? detail::repairEntry(guarded()) : NO_POSITION;

    std::int64_t end = NO_POSITION;
    if (has(APPEND)) {
        const std::int32_t result = VXFileSeekToEnd(m_handle, &end);
        throwIfFailed(result, u"write", m_path);
        if (result > 0)
            return;
        if (isLine && m_isRegular && end != lineEnd) {
            throwIfFailed(detail::endLastLine(guarded(), end), u"write", m_path);
            throwIfFailed(VXFileSeekToEnd(m_handle, &end), u"write", m_path);
        }
    } else if (m_semaphore) {
        end = positionAtEnd();
    }
    if (length > 0)
        writeEntry(bytes, length, end);
    if (has(KEEPCLOSED))
        flush();
}

void FileOutputStream::flush()
{
    const sync::ScopedWait mutex(has(KEEPCLOSED) ? m_mutex.get() : nullptr);
    const std::uint32_t handle = m_handle;
    if (handle == VX_FILE_INVALID_HANDLE)
        return;
    const std::int32_t result = VXFileFlush(handle);
    if (has(KEEPCLOSED))
        close();
    throwIfFailed(result, u"flush", m_path);
}

void FileOutputStream::close()
{
    const sync::ScopedWait mutex(m_mutex.get());
    closeHandle();
}

short FileOutputStream::is_open() const
{
    return m_handle != VX_FILE_INVALID_HANDLE ? 1 : 0;
}

void FileOutputStream::open()
{
    requirePath(m_path);
    const sync::ScopedWait mutex(m_mutex.get());
    openAgain();
}

std::int64_t FileOutputStream::getSize()
{
    const sync::ScopedWait mutex(m_mutex.get());
    if (has(KEEPCLOSED))
        openAgain();
    std::int64_t size = 0;
    const std::int32_t result = VXFileGetSize(m_handle, &size);
    if (has(KEEPCLOSED))
        close();
    throwIfFailed(result, u"ask the size of", m_path);
    return size;
}

std::uint32_t FileOutputStream::getHandle()
{
    return has(KEEPCLOSED) ? VX_FILE_INVALID_HANDLE : m_handle.load();
}

void FileOutputStream::wait()
{
    if (!m_semaphore)
        return;
    m_semaphore->wait();
    try {
        const sync::ScopedWait mutex(m_mutex.get());
        const bool isClosed = is_open() == 0;
        if (m_semaphore->getNote().length == 0 || (isClosed && !has(KEEPCLOSED)))
            return;
        openAgain();
        detail::repairEntry(guarded());
        if (isClosed)
            closeHandle();
    } catch (const Exception&) {
        // The caller has the lock. The next write reports the error of the file.
    }
}

void FileOutputStream::signal()
{
    if (m_semaphore)
        m_semaphore->signal();
}

std::uint32_t FileOutputStream::openFile(const String& path, unsigned int mode)
{
    return detail::openFile(path,
        VX_FILE_WRITE | VX_FILE_CREATE | ((mode & ATEND) != 0 ? VX_FILE_AT_END : 0)
            | ((mode & APPEND) != 0 ? VX_FILE_APPEND : 0) | ((mode & TRUNC) != 0 ? VX_FILE_TRUNCATE : 0));
}

void FileOutputStream::init(const String& path)
{
    requirePath(path);
    if (has(APPEND | KEEPCLOSED | LOCK))
        m_mutex = new sync::Mutex;
    if (has(APPEND | LOCK))
        during(u"lock", path, [&] { m_semaphore = new ipc::SemaphoreR(semaphoreName(path).data(), 1, m_mutex.get()); });
    setHandle(openFile(path, m_mode));
    if (has(KEEPCLOSED))
        close();
}

void FileOutputStream::openAgain()
{
    if (m_handle == VX_FILE_INVALID_HANDLE)
        setHandle(openFile(m_path, m_mode & ~TRUNC));
}

void FileOutputStream::setHandle(std::uint32_t handle)
{
    m_handle = handle;
    m_isRegular = VXFileIsRegular(handle) == RESULT_OK;
    if (m_semaphore && failed(VXFileGetIdentity(handle, &m_identity)))
        m_identity = {};
}

void FileOutputStream::closeHandle() noexcept
{
    const std::uint32_t handle = m_handle;
    if (!m_owned || handle == VX_FILE_INVALID_HANDLE)
        return;
    // After any other failure the system has closed the handle nevertheless, and may give its number to the next file.
    if (VXFileClose(handle) != RESULT_INVALID_HANDLE)
        m_handle = VX_FILE_INVALID_HANDLE;
}

detail::GuardedFile FileOutputStream::guarded()
{
    return {*m_semaphore, m_handle, m_identity, has(APPEND)};
}

std::int64_t FileOutputStream::positionAtEnd() const
{
    std::int64_t position = NO_POSITION;
    std::int64_t size = 0;
    const bool isKnown = !failed(VXFileGetPosition(m_handle, &position)) && !failed(VXFileGetSize(m_handle, &size));
    return isKnown && position >= size ? position : NO_POSITION;
}

void FileOutputStream::writeEntry(const signed char* bytes, std::int32_t length, std::int64_t end)
{
    if (!m_semaphore || end == NO_POSITION)
        return writeAll(bytes, length, nullptr);
    detail::EntryNote note(guarded(), end, bytes, length);
    writeAll(bytes, length, &note);
    if (note.isSplit()) // the disk was full for a moment, and another program has written meanwhile
        throwIfFailed(RESULT_DISK_FULL, u"write", m_path);
}

void FileOutputStream::writeAll(const signed char* bytes, std::int32_t length, detail::EntryNote* note)
{
    const auto put = m_isRegular ? VXFileWriteRegular : VXFileWrite;
    while (length > 0) {
        std::int32_t done = 0;
        throwIfFailed(put(m_handle, bytes, length, &done), u"write", m_path);
        if (done == 0) // a device that accepts no more bytes and reports no error
            throwIfFailed(RESULT_DISK_FULL, u"write", m_path);
        if (note != nullptr)
            note->wrote(done);
        bytes += done;
        length -= done;
    }
}

} // namespace vx::io
