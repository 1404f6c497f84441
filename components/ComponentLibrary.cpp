#include "ComponentLibrary.h"

#include <vx/Exception.h>

#include <climits>
#include <cstdlib>
#include <dlfcn.h>

namespace vx::components {

String libraryFolder(const void* address)
{
    Dl_info library;
    char path[PATH_MAX];
    if (::dladdr(address, &library) == 0 || ::realpath(library.dli_fname, path) == nullptr)
        throw Exception(u"The system does not know the path of a component library");
    String folder(std::string_view {path});
    folder.remove(folder.lastIndexOf(u'/'));
    return folder;
}

} // namespace vx::components
