#include "vx/Version.h"

#include <string_view>

#define VX_TEXT_OF(number) #number
#define VX_DOTTED(major, minor, patch) VX_TEXT_OF(major) "." VX_TEXT_OF(minor) "." VX_TEXT_OF(patch)
#define VX_VERSION_TEXT VX_DOTTED(VXLIB4_VERSION_MAJOR, VXLIB4_VERSION_MINOR, VXLIB4_VERSION_PATCH)

static_assert(
    std::string_view(VX_VERSION_TEXT) == VX_PROJECT_VERSION, "vx/Version.h has not the version of the project");
static_assert(VXLIB4_VERSION_MINOR < 100 && VXLIB4_VERSION_PATCH < 100, "each has two digits of the number");

std::uint32_t VXLIBGetVersion(void)
{
    return VXLIB4_VERSION;
}

const char* VXLIBGetVersionText(void)
{
    return VX_VERSION_TEXT;
}
