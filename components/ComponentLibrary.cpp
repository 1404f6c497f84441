#include "ComponentLibrary.h"

#include <vx/Exception.h>

#include <climits>
#include <cstdlib>
#include <dlfcn.h>

namespace vx::components {

namespace {

String libraryPath(const void* address)
{
    Dl_info library;
    char path[PATH_MAX];
    if (::dladdr(address, &library) == 0 || ::realpath(library.dli_fname, path) == nullptr)
        throw Exception(u"The system does not tell where a component library lies");
    return std::string_view(path);
}

} // namespace

String libraryFolder(const void* address)
{
    String path = libraryPath(address);
    path.remove(path.lastIndexOf(u'/'));
    return path;
}

std::int32_t registerLibrary(vorb::Module& module, const void* address)
{
    return vorb::resultAtBoundary([&] { return module.RegisterServer(libraryPath(address).getData()); });
}

} // namespace vx::components
