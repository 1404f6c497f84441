#include "Complaint.h"

#include <cstdio>

namespace vxlogd {

void complain(const std::string& text)
{
    std::fprintf(stderr, "vxlogd: %s\n", text.c_str());
}

} // namespace vxlogd
