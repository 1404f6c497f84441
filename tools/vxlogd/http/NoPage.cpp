/// The page in a program that was built without the library for it.

#include "Page.h"

#include "common/Failure.h"

namespace vxlogd::http {

class Page::Site { };

Page::Page(const Settings& settings, Status&, Tail&)
{
    throw vxtools::Failure("--http=" + settings.http, "this vxlogd was built without the page (cpp-httplib)");
}

Page::~Page() = default;

std::string Page::getAddress() const
{
    return {};
}

void Page::start() { }

} // namespace vxlogd::http
