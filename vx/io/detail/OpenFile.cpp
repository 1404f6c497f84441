#include "vx/io/detail/OpenFile.h"

#include "vx/Exception.h"
#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vx/TerminatedText.h"
#include "vxsys/File.h"

namespace vx::io::detail {

std::uint32_t openFile(const String& path, std::uint32_t flags)
{
    constexpr std::int32_t OWNER_ALL = 0700;

    std::uint32_t handle = VX_FILE_INVALID_HANDLE;
    during(u"open", path,
        [&] { throwIfFailed(VXFileOpen(SystemName(path, RESULT_INVALID_ARGUMENT), flags, OWNER_ALL, &handle)); });
    return handle;
}

} // namespace vx::io::detail
