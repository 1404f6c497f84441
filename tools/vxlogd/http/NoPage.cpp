/// The page in a program that was built without the library for it.

#include "Page.h"

#include "common/Failure.h"

namespace vxlogd::http {

class Page::Site { };

Page::Page(const Settings& settings, Status&, Tail&)
{
    checkPage(settings);
}

Page::~Page() = default;

std::string Page::getAddress() const
{
    return {};
}

void Page::start() { }

void checkPage(const Settings& settings)
{
    if (!settings.http.empty())
        throw vxtools::Failure("--http=" + settings.http, "this vxlogd was built without the page (cpp-httplib)");
}

} // namespace vxlogd::http
