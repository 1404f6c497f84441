#include "vxreg/Results.h"

#include "common/Failure.h"
#include "vxreg/Texts.h"

#include <vx/Result.h>
#include <vx/String.h>
#include <vxsys/Registry.h>

#include <cerrno>
#include <climits>
#include <optional>
#include <span>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace vxreg {

using vxtools::Text;

namespace {

struct Row {
    std::int32_t result;
    Message text;
};

constexpr Row STORE[] = {
    {vx::RESULT_NOT_FOUND, NOT_FOUND},
    {vx::RESULT_ACCESS_DENIED, STORE_DENIED},
    {vx::RESULT_NAME_TOO_LONG, NAME_TOO_LONG},
    {vx::RESULT_INVALID_NAME, NO_NAME},
    {vx::RESULT_STORE_CORRUPT, STORE_DAMAGED},
    {vx::RESULT_DISK_FULL, DISK_FULL},
    {vx::RESULT_OUT_OF_MEMORY, OUT_OF_MEMORY},
};

constexpr Row LIBRARY[] = {
    {vx::RESULT_NOT_FOUND, NO_FILE},
    {vx::RESULT_PATH_NOT_FOUND, NO_FOLDER},
    {vx::RESULT_ACCESS_DENIED, NOT_TRUSTED},
    {vx::RESULT_INVALID_NAME, NO_FULL_PATH},
    {vx::RESULT_MODULE_NOT_FOUND, NOT_LOADABLE},
    {vx::RESULT_BAD_MODULE, NO_WHOLE_LIBRARY},
    {vx::RESULT_SYMBOL_NOT_FOUND, NO_COMPONENT},
    {vx::RESULT_CLASS_NOT_AVAILABLE, LACKS_CLASS},
    {vx::RESULT_OUT_OF_MEMORY, OUT_OF_MEMORY},
};

Text find(std::span<const Row> rows, std::int32_t result)
{
    for (const Row& row : rows) {
        if (row.result == result)
            return row.text();
    }
    return vxtools::textOfResult(result);
}

/// Tries to make the first missing folder on the way to the registry, and removes it again.
std::optional<Text> whyNoFolder()
{
    char path[PATH_MAX];
    if (vx::failed(VXRegistryGetPlace(path, sizeof path)))
        return std::nullopt;
    const std::string place = path;
    for (std::size_t end = 0; place.starts_with('/') && end != place.npos;) {
        end = place.find('/', end + 1);
        const std::string folder = place.substr(0, end);
        if (::access(folder.c_str(), F_OK) == 0)
            continue;
        if (::mkdir(folder.c_str(), S_IRWXU) != 0)
            return errno != EEXIST ? std::optional(NO_FOLDER_MADE(folder, vxtools::textOfError(errno))) : std::nullopt;
        ::rmdir(folder.c_str());
        break;
    }
    return std::nullopt;
}

} // namespace

Text textOfStore(std::int32_t result)
{
    return find(STORE, result);
}

Text textOfAddition(std::int32_t result)
{
    const std::optional<Text> why = whyNoFolder();
    return why ? *why : textOfStore(result);
}

Text textOfAddition(const vx::Exception& failure)
{
    const std::optional<Text> why = whyNoFolder();
    return why ? *why : textOf(failure);
}

Text textOfLibrary(std::int32_t result)
{
    return find(LIBRARY, result);
}

Text textOf(const vx::Exception& failure)
{
    const std::string text = failure.getDescription().toUtf8();
    return text.empty() ? textOfStore(failure.getResult()) : Text(text);
}

} // namespace vxreg
