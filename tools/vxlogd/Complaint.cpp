#include "Complaint.h"

#include <vx/Exception.h>
#include <vx/Result.h>

#include <cstdio>
#include <system_error>

namespace vxlogd {

void complain(const std::string& text)
{
    std::fprintf(stderr, "vxlogd: %s\n", text.c_str());
}

std::string textOf(const vx::Exception& failure)
{
    if (const std::string text = failure.getDescription().toUtf8(); !text.empty())
        return text;
    constexpr int LAST_ERROR = 133;
    for (int error = 1; error <= LAST_ERROR; ++error) {
        if (failure.getResult() != vx::RESULT_FAIL && VXResultFromNative(error) == failure.getResult())
            return std::generic_category().message(error);
    }
    char text[32];
    std::snprintf(text, sizeof text, "failed with 0x%08X", static_cast<unsigned>(failure.getResult()));
    return text;
}

} // namespace vxlogd
