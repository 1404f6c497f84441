#pragma once

#include <vx/String.h>

#include <string>

namespace vxtools {

/// Resolves symbolic links at the end of a path, whether or not the file is there.
std::string followLinks(std::string path);

/// The one text by which the processes that append to a file know each other: absolute, without symbolic links. The file
/// need not exist. Throws Failure for a name that the library cannot have: it reads names as UTF-8, in which a backslash
/// separates folders.
vx::String canonicalPath(const std::string& file);

} // namespace vxtools
