#include "vx/util/detail/FileBytes.h"

#include "vxsys/File.h"

#include <algorithm>
#include <limits>

namespace vx::util::detail {

namespace {

std::int32_t readAll(std::uint32_t file, std::string& bytes)
{
    constexpr std::size_t LEAST_ROOM = 4096;
    std::int64_t size = 0;
    if (VXFileGetSize(file, &size) >= 0 && size > 0)
        bytes.reserve(static_cast<std::size_t>(size) + LEAST_ROOM);
    for (;;) {
        const std::size_t length = bytes.size();
        bytes.resize(std::max(bytes.capacity(), length + LEAST_ROOM));
        std::int32_t done = 0;
        const auto room = std::min<std::size_t>(bytes.size() - length, std::numeric_limits<std::int32_t>::max());
        const std::int32_t result = VXFileRead(file, bytes.data() + length, static_cast<std::int32_t>(room), &done);
        bytes.resize(length + static_cast<std::size_t>(done));
        if (result < 0 || done == 0)
            return result;
    }
}

} // namespace

std::int32_t readFile(const char16_t* path, std::string& bytes)
{
    std::uint32_t file = VX_FILE_INVALID_HANDLE;
    std::int32_t result = VXFileOpen(path, VX_FILE_READ, 0, &file);
    if (result < 0)
        return result;
    try {
        result = readAll(file, bytes);
    } catch (...) {
        VXFileClose(file);
        throw;
    }
    VXFileClose(file);
    return result;
}

} // namespace vx::util::detail
