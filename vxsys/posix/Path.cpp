#include "vxsys/detail/Path.h"

#include "vxsys/File.h"
#include "vxsys/Result.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <iterator>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace vxsys::results;
using namespace vxsys::detail;

std::int32_t getCurrent(char16_t* target, std::size_t size) noexcept
{
    char native[NATIVE_PATH_SIZE];
    if (::getcwd(native, sizeof native) == nullptr)
        return errno == ERANGE ? RESULT_NAME_TOO_LONG : VXResultFromNative(errno);
    return widenPath(native, target, size);
}

/// Whether the user may create files there.
bool isWorkingDirectory(const char* path) noexcept
{
    struct stat status;
    return path != nullptr && *path == '/' && ::stat(path, &status) == 0 && S_ISDIR(status.st_mode)
        && ::faccessat(AT_FDCWD, path, W_OK | X_OK, AT_EACCESS) == 0;
}

/// Converts `directory` and adds a separator at its end if it has none.
std::int32_t widenDirectory(std::string_view directory, char16_t* target, std::size_t size) noexcept
{
    while (!directory.empty() && directory.back() == '/')
        directory.remove_suffix(1);
    const std::int32_t result = widenPath(directory, target, size);
    if (failed(result))
        return result;
    const std::size_t length = std::u16string_view(target).size();
    if (length + 1 == size) {
        *target = 0;
        return RESULT_BUFFER_TOO_SMALL;
    }
    target[length] = u'\\';
    target[length + 1] = 0;
    return RESULT_OK;
}

} // namespace

std::int32_t VXPathExpand(const char16_t* path, char16_t* target, std::int32_t size) noexcept
{
    if (target == nullptr || size < 1)
        return RESULT_INVALID_ARGUMENT;
    *target = 0;
    if (path == nullptr)
        return RESULT_INVALID_ARGUMENT;

    char16_t current[NATIVE_PATH_SIZE + 2] = u""; // with a drive
    if (splitPath(path).isRelative()) {
        const std::int32_t result = getCurrent(current, std::size(current));
        if (failed(result))
            return result;
    }
    return expandPath(path, current, target, static_cast<std::size_t>(size));
}

std::int32_t VXPathGetCurrent(char16_t* target, std::int32_t size) noexcept
{
    if (target == nullptr || size < 1)
        return RESULT_INVALID_ARGUMENT;
    *target = 0;
    return getCurrent(target, static_cast<std::size_t>(size));
}

std::int32_t VXPathGetTemp(char16_t* target, std::int32_t size) noexcept
{
    if (target == nullptr || size < 1)
        return RESULT_INVALID_ARGUMENT;
    *target = 0;

    const char* wished = ::secure_getenv("TMPDIR"); // null in a program that runs with another user's rights
    if (isWorkingDirectory(wished)) {
        const std::int32_t result = widenDirectory(wished, target, static_cast<std::size_t>(size));
        if (result != RESULT_INVALID_NAME) // such a path has no form here
            return result;
    }
    return widenDirectory("/tmp", target, static_cast<std::size_t>(size));
}
