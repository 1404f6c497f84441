#include "vxsys/Component.h"
#include "vxsys/Result.h"

#include <cerrno>
#include <unistd.h>

std::int32_t VXComGenerateGUID(_GUID* guid) noexcept
{
    using namespace vxsys::results;

    if (guid == nullptr)
        return RESULT_POINTER;
    *guid = {};
    _GUID random;
    if (::getentropy(&random, sizeof random) != 0)
        return VXResultFromNative(errno);
    random.Data3 = static_cast<std::uint16_t>((random.Data3 & 0x0FFF) | 0x4000); // version 4: random
    random.Data4[0] = static_cast<std::uint8_t>((random.Data4[0] & 0x3F) | 0x80); // the variant of RFC 4122
    *guid = random;
    return RESULT_OK;
}
