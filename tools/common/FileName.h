#pragma once

#include <vx/String.h>

#include <string>

namespace vxtools {

/// Resolves symbolic links at the end of a path, whether or not the file is there.
std::string followLinks(std::string path);

/// The name by which all processes that append to a file refer to it: absolute, without symbolic links. The file need
/// not exist. Throws Failure for a name that the library cannot represent: it reads names as UTF-8 and takes a
/// backslash for a separator of folders.
vx::String canonicalPath(const std::string& file);

} // namespace vxtools
