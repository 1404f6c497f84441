#include "vx/io/RotatingFileStream.h"

#include "vx/Exceptions.h"
#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vx/TerminatedText.h"
#include "vx/detail/Hidden.h"
#include "vx/io/FileOutputStream.h"
#include "vx/sync/Mutex.h"
#include "vx/sync/ScopedLock.h"
#include "vx/sync/ScopedWait.h"
#include "vxsys/File.h"
#include "vxsys/Folder.h"
#include "vxsys/Time.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vx::io {

namespace {

constexpr std::size_t LEAST_DIGITS = 6;

/// The time of the monotonic clock, which is never changed.
std::int64_t milliseconds()
{
    using namespace std::chrono;
    return floor<std::chrono::milliseconds>(steady_clock::now().time_since_epoch()).count();
}

struct OldFile {
    std::int64_t number = 0;
    String path;

    bool operator<(const OldFile& other) const { return number < other.number; }
};

/// The files in the folder of `path` whose names are that of `path`, a point and a number. They may have a further
/// extension.
class OldFiles {
public:
    explicit OldFiles(std::u16string_view path)
    {
        const std::size_t separator = path.find_last_of(u"\\/");
        m_folder = separator != path.npos ? path.substr(0, separator + 1) : std::u16string_view();
        m_prefix = std::u16string(path.substr(m_folder.size())) + u'.';
        const String folder(m_folder.empty() ? std::u16string_view(u".") : m_folder);
        const auto take
            = [](void* self, const char16_t* name) noexcept { return static_cast<OldFiles*>(self)->take(name); };
        throwIfFailed(VXFolderList(SystemName(folder), take, this), u"look for older files in", folder);
        std::sort(m_files.begin(), m_files.end());
    }

    /// Their numbers, the oldest file first.
    const std::vector<OldFile>& get() const noexcept { return m_files; }

    String pathOf(std::int64_t number) const
    {
        const std::string digits = std::to_string(number);
        std::u16string path = m_folder + m_prefix;
        path.append(LEAST_DIGITS - std::min(digits.size(), LEAST_DIGITS), u'0');
        path.append(digits.begin(), digits.end());
        return String(path);
    }

private:
    std::int32_t take(std::u16string_view name) noexcept
    {
        constexpr std::size_t MOST_DIGITS = 18;
        if (!name.starts_with(m_prefix))
            return RESULT_OK;
        const std::u16string_view rest = name.substr(m_prefix.size());
        const std::size_t digits = std::min(rest.find_first_not_of(u"0123456789"), rest.size());
        const bool isOurs
            = digits >= LEAST_DIGITS && digits <= MOST_DIGITS && (digits == rest.size() || rest[digits] == u'.');
        if (!isOurs)
            return RESULT_OK;
        try {
            OldFile file {0, String(m_folder + std::u16string(name))};
            for (const char16_t digit : rest.substr(0, digits))
                file.number = file.number * 10 + (digit - u'0');
            m_files.push_back(std::move(file));
        } catch (const std::bad_alloc&) {
            return RESULT_OUT_OF_MEMORY;
        }
        return RESULT_OK;
    }

    std::u16string m_folder; ///< with the separator
    std::u16string m_prefix;
    std::vector<OldFile> m_files;
};

/// Removes the oldest files until the rest is within the limits. A file and its compressed form count as one.
void removeOld(std::vector<OldFile> files, const Rotation& rotation)
{
    int count = 0;
    std::int64_t bytes = 0;
    bool isFull = false;
    for (auto file = files.rbegin(); file != files.rend(); ++file) {
        if (file == files.rbegin() || file->number != std::prev(file)->number)
            ++count;
        VXFileStatus status;
        if (failed(VXFileGetStatus(SystemName(file->path), &status)))
            continue; // another process has removed it
        bytes += status.size;
        isFull = isFull || (rotation.keepFiles > 0 && count > rotation.keepFiles)
            || (rotation.keepBytes > 0 && bytes > rotation.keepBytes);
        const std::int32_t result = isFull ? VXFileRemove(SystemName(file->path)) : RESULT_OK;
        if (result != RESULT_NOT_FOUND)
            throwIfFailed(result, u"remove", file->path);
    }
}

const Rotation& checked(const Rotation& rotation, const String& path)
{
    if (rotation.mostBytes < 0 || rotation.keepFiles < 0 || rotation.keepBytes < 0)
        throwIfFailed(RESULT_INVALID_ARGUMENT, u"set a negative limit for", path);
    return rotation;
}

bool isMissing(const String& path)
{
    VXFileStatus status;
    return VXFileGetStatus(SystemName(path), &status) == RESULT_NOT_FOUND;
}

void setAccess(FileOutputStream& file, std::int32_t access, const String& path)
{
    if (access != 0)
        throwIfFailed(VXFileSetAccess(file.getHandle(), access), u"set the mode of", path);
}

Reference<FileOutputStream> openFirst(const String& path, std::int32_t access)
{
    const bool isNew = isMissing(path);
    Reference<FileOutputStream> file(new FileOutputStream(path, FileOutputStream::APPEND));
    if (isNew)
        setAccess(*file, access, path);
    return file;
}

} // namespace

/// All of the stream, so that it can grow without users being compiled again. An object, because the end of a lock or a
/// file may throw.
class VX_HIDDEN RotatingFileStream::Core : public Object {
public:
    Core(const String& path, Rotation rotation);

    void write(const signed char* bytes, std::int32_t length);
    void flush();
    void close();

private:
    void follow() VX_REQUIRES(m_lock);
    bool isDue(std::int32_t length) VX_REQUIRES(m_lock);
    void learnPeriod(std::int64_t now) VX_REQUIRES(m_lock);
    std::int64_t periodNow() const;
    std::int64_t periodOf(std::int64_t seconds) const;
    String rotate() VX_REQUIRES(m_lock);
    void reportTo(const std::function<void()>& work);

    const String m_path;
    const Rotation m_rotation;
    sync::Mutex m_lock;
    const Reference<FileOutputStream> m_file;
    VXFileStatus m_status VX_GUARDED_BY(m_lock) {}; ///< of the file at the time when the semaphore was taken
    std::int64_t m_nextTry VX_GUARDED_BY(m_lock) = 0; ///< after a failed rotation, in milliseconds of a clock
    VXFileIdentity m_dated VX_GUARDED_BY(m_lock) {}; ///< the file to which `m_period` belongs
    std::int64_t m_period VX_GUARDED_BY(m_lock) = 0;
    bool m_isSuccessor VX_GUARDED_BY(m_lock) = false; ///< the file has taken the place of one that was open
};

RotatingFileStream::Core::Core(const String& path, Rotation rotation)
    : m_path(path)
    , m_rotation(checked(rotation, path))
    , m_file(openFirst(path, m_rotation.access))
{
}

void RotatingFileStream::Core::write(const signed char* bytes, std::int32_t length)
{
    String closed;
    {
        const sync::ScopedLock lock(m_lock);
        const sync::ScopedWait file(m_file.get());
        follow();
        reportTo([&]() VX_NO_THREAD_SAFETY_ANALYSIS { closed = isDue(length) ? rotate() : String(); });
        m_file->writeLine(bytes, length);
    }
    if (!closed.isEmpty() && m_rotation.onClosed)
        reportTo([&] { m_rotation.onClosed(closed); });
}

void RotatingFileStream::Core::flush()
{
    const sync::ScopedLock lock(m_lock);
    m_file->flush();
}

void RotatingFileStream::Core::close()
{
    const sync::ScopedLock lock(m_lock);
    m_file->close();
}

/// Opens the file that has the name now, unless it is open already. Removes an incomplete entry of a killed process
/// from its end.
void RotatingFileStream::Core::follow()
{
    const SystemName path(m_path);
    VXFileIdentity open {};
    const bool isOpen = !failed(VXFileGetIdentity(m_file->getHandle(), &open));
    if (isOpen && !failed(VXFileGetStatus(path, &m_status)) && m_status.identity == open)
        return;
    m_isSuccessor = isOpen;
    const bool isNew = isMissing(m_path);
    m_file->close();
    m_file->open();
    if (isNew)
        reportTo([&] { setAccess(*m_file, m_rotation.access, m_path); });
    { // taking the semaphore repairs the file
        const sync::ScopedWait repair(m_file.get());
    }
    throwIfFailed(VXFileGetStatus(path, &m_status), u"look at", m_path);
}

bool RotatingFileStream::Core::isDue(std::int32_t length)
{
    const std::int64_t now = periodNow();
    learnPeriod(now);
    if (m_status.size == 0 || length <= 0 || milliseconds() < m_nextTry)
        return false;
    return now != m_period || (m_rotation.mostBytes > 0 && m_status.size + length > m_rotation.mostBytes);
}

/// Finds out to which period the file belongs. Its time tells that only if this stream has not written to it yet: file
/// systems take the time from a clock that is some milliseconds late, and file servers from another clock. By such a time
/// each entry at the start of a period would begin another file.
void RotatingFileStream::Core::learnPeriod(std::int64_t now)
{
    constexpr std::int64_t NANOSECONDS = 1'000'000'000, MOST_LATE = 10;
    if (m_rotation.every == Rotation::Every::NEVER || (m_status.size > 0 && m_status.identity == m_dated))
        return;
    m_period = m_status.size > 0 ? periodOf(m_status.modified / NANOSECONDS + (m_isSuccessor ? MOST_LATE : 0)) : now;
    m_dated = m_status.identity;
}

std::int64_t RotatingFileStream::Core::periodNow() const
{
    if (m_rotation.every == Rotation::Every::NEVER)
        return 0;
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch());
    return periodOf(now.count());
}

/// The number of the hour or the day.
std::int64_t RotatingFileStream::Core::periodOf(std::int64_t seconds) const
{
    constexpr std::int64_t HOUR = 3600, DAY = 24 * HOUR;
    std::int32_t ahead = 0;
    if (!m_rotation.isUtc)
        throwIfFailed(VXTimeGetOffset(seconds, &ahead));
    return (seconds + ahead) / (m_rotation.every == Rotation::Every::HOUR ? HOUR : DAY);
}

/// Returns the path for `onClosed`, empty for none.
String RotatingFileStream::Core::rotate()
{
    constexpr std::int64_t PAUSE = 1000;
    m_nextTry = milliseconds() + PAUSE;
    m_file->flush(); // for all processes: a later flush of another one only affects the new file
    OldFiles old(m_path.view());
    std::vector<OldFile> files = old.get();
    std::int64_t number = files.empty() ? 0 : files.back().number;
    std::int32_t result = RESULT_OK;
    String path;
    do { // a process of another user may take a number
        path = old.pathOf(++number);
        result = VXFileRename(SystemName(m_path), SystemName(path));
    } while (result == RESULT_ALREADY_EXISTS);
    throwIfFailed(result, u"rename", m_path);
    try {
        follow();
    } catch (const Exception&) { // there is no room for another file, say: this one has to go on
        VXFileRename(SystemName(path), SystemName(m_path));
        m_file->open();
        throw;
    }
    learnPeriod(periodNow());
    m_nextTry = 0;

    const String before = files.empty() ? String() : files.back().path;
    files.push_back({number, path});
    removeOld(std::move(files), m_rotation);
    VXFileStatus status;
    return !before.isEmpty() && !failed(VXFileGetStatus(SystemName(before), &status)) ? before : String();
}

void RotatingFileStream::Core::reportTo(const std::function<void()>& work)
{
    try {
        work();
    } catch (const Exception& failure) {
        if (m_rotation.onFailure)
            m_rotation.onFailure(failure);
    }
}

RotatingFileStream::RotatingFileStream(const String& path, Rotation rotation)
    : m_core(new Core(path, std::move(rotation)))
{
}

RotatingFileStream::~RotatingFileStream() noexcept(false) = default;

void RotatingFileStream::write(const signed char* bytes, std::int32_t length)
{
    m_core->write(bytes, length);
}

void RotatingFileStream::flush()
{
    m_core->flush();
}

void RotatingFileStream::close()
{
    m_core->close();
}

} // namespace vx::io
