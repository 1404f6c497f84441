#include "vxsys/detail/Path.h"

#include "vxsys/Result.h"
#include "vxsys/Text.h"
#include "vxsys/detail/Utf.h"

#include <algorithm>

namespace vxsys::detail {

namespace {

using namespace results;
using namespace std::literals;

constexpr std::u16string_view TERMINATOR = u"\0"sv;
constexpr std::u16string_view SEPARATORS = u"\\/";
constexpr char16_t SYSTEM_DRIVE = u'C';

bool isSeparator(char16_t unit) noexcept
{
    return unit == u'\\' || unit == u'/';
}

/// Removes the text before the next separator from `text`, and returns it.
std::u16string_view takeName(std::u16string_view& text) noexcept
{
    const std::u16string_view name = text.substr(0, text.find_first_of(SEPARATORS));
    text.remove_prefix(name.size());
    return name;
}

/// Fills a buffer from its end, so that path components which a later ".." removes are never written.
class BackwardWriter {
public:
    BackwardWriter(char16_t* target, std::size_t size) noexcept
        : m_target(target)
        , m_left(size)
        , m_end(target + size)
    {
    }

    void put(std::u16string_view text) noexcept
    {
        m_isFull = m_isFull || text.size() > m_left;
        if (m_isFull)
            return;
        m_left -= text.size();
        text.copy(m_target + m_left, text.size());
    }

    bool isFull() const noexcept { return m_isFull; }
    std::size_t getLength() const noexcept { return static_cast<std::size_t>(m_end - m_target) - m_left; }
    void moveToFront() noexcept { std::copy(m_target + m_left, m_end, m_target); }

private:
    char16_t* m_target;
    std::size_t m_left;
    char16_t* m_end;
    bool m_isFull = false;
};

/// Writes the components of `path` from the last to the first, each with a separator before it. `taken` counts the
/// components that a ".." after them removes.
void putComponents(std::u16string_view path, std::size_t& taken, BackwardWriter& writer) noexcept
{
    while (!path.empty()) {
        const std::size_t separator = path.find_last_of(SEPARATORS);
        const std::size_t start = separator == path.npos ? 0 : separator + 1;
        const std::u16string_view name = path.substr(start);
        path = path.substr(0, start == 0 ? 0 : separator);
        if (name.empty() || name == u".")
            continue;
        if (name == u"..") {
            ++taken;
        } else if (taken != 0) {
            --taken;
        } else {
            writer.put(name);
            writer.put(u"\\");
        }
    }
}

} // namespace

PathParts splitPath(std::u16string_view path) noexcept
{
    PathParts parts;
    if (path.size() > 2 && isSeparator(path[0]) && isSeparator(path[1])) {
        parts.isShare = true;
        path.remove_prefix(2);
        parts.server = takeName(path);
        if (!path.empty())
            path.remove_prefix(1);
        parts.share = takeName(path);
    } else {
        if (path.size() > 1 && path[1] == u':') {
            parts.drive = VXToUpperW(path[0]);
            path.remove_prefix(2);
        }
        parts.isRooted = !path.empty() && isSeparator(path[0]);
    }
    parts.rest = path;
    return parts;
}

bool PathParts::isRelative() const noexcept
{
    return !isShare && !isRooted && (drive == 0 || drive == SYSTEM_DRIVE);
}

std::int32_t expandPath(
    std::u16string_view path, std::u16string_view current, char16_t* target, std::size_t size) noexcept
{
    if (size == 0)
        return RESULT_BUFFER_TOO_SMALL;
    *target = 0;
    const PathParts parts = splitPath(path);
    if (parts.isShare && (parts.server.empty() || parts.share.empty()))
        return RESULT_INVALID_NAME;

    BackwardWriter writer(target, size);
    writer.put(TERMINATOR);
    if (!parts.rest.empty() && isSeparator(parts.rest.back()))
        writer.put(u"\\");
    std::size_t taken = 0;
    putComponents(parts.rest, taken, writer);
    if (parts.isShare) {
        for (const std::u16string_view part : {parts.share, u"\\"sv, parts.server, u"\\\\"sv})
            writer.put(part);
    } else {
        if (parts.isRelative())
            putComponents(splitPath(current).rest, taken, writer);
        if (writer.getLength() == TERMINATOR.size())
            writer.put(u"\\");
        writer.put(u":");
        writer.put({parts.drive != 0 ? &parts.drive : &SYSTEM_DRIVE, 1});
    }
    if (writer.isFull()) {
        *target = 0;
        return RESULT_BUFFER_TOO_SMALL;
    }
    writer.moveToFront();
    return RESULT_OK;
}

std::int32_t NativePath::assign(const char16_t* path) noexcept
{
    if (path == nullptr)
        return RESULT_INVALID_ARGUMENT;
    if (*path == 0)
        return RESULT_NOT_FOUND;
    const PathParts parts = splitPath(path);
    if (parts.isShare || (parts.drive != 0 && parts.drive != SYSTEM_DRIVE))
        return RESULT_PATH_NOT_FOUND;

    const std::u16string_view native = parts.rest.empty() ? u"."sv : parts.rest; // "C:" is the current directory
    const Conversion done = utf16ToUtf8(native, m_bytes, sizeof m_bytes - 1);
    if (done.outcome == Outcome::badText)
        return RESULT_INVALID_NAME;
    if (done.outcome == Outcome::noRoom)
        return RESULT_NAME_TOO_LONG;
    m_bytes[done.written] = '\0';
    std::replace(m_bytes, m_bytes + done.written, '\\', '/');
    return RESULT_OK;
}

std::int32_t widenPath(std::string_view native, char16_t* target, std::size_t size) noexcept
{
    constexpr std::u16string_view DRIVE = u"C:";

    if (size == 0)
        return RESULT_BUFFER_TOO_SMALL;
    *target = 0;
    if (native.find('\\') != native.npos)
        return RESULT_INVALID_NAME;
    if (size < DRIVE.size() + TERMINATOR.size())
        return RESULT_BUFFER_TOO_SMALL;

    char16_t* const behindDrive = target + DRIVE.copy(target, DRIVE.size());
    const Conversion done = utf8ToUtf16(native, behindDrive, size - DRIVE.size() - TERMINATOR.size());
    if (done.outcome != Outcome::done) {
        *target = 0;
        return done.outcome == Outcome::noRoom ? RESULT_BUFFER_TOO_SMALL : RESULT_INVALID_NAME;
    }
    char16_t* const end = behindDrive + done.written;
    std::replace(behindDrive, end, u'/', u'\\');
    *end = 0;
    return RESULT_OK;
}

} // namespace vxsys::detail
