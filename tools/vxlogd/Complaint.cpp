#include "Complaint.h"

#include "common/Program.h"

namespace vxlogd {

void complain(const std::string& text)
{
    vxtools::complain("vxlogd", text);
}

} // namespace vxlogd
