#pragma once

#include <vx/String.h>

#include <optional>
#include <string>

namespace vxtools {

/// Resolves symbolic links at the end of a path, whether or not the file is there.
std::string followLinks(std::string path);

/// The name by which all processes that append to a file refer to it: absolute, without symbolic links. The file need
/// not exist. Throws Failure for a name that the library cannot represent: it reads names as UTF-8 and takes a
/// backslash for a separator of folders.
vx::String canonicalPath(const std::string& file);

/// The mode that octal digits such as "640" mean. None if they mean none, or one in which the owner may not write.
std::optional<unsigned int> modeOf(const std::string& text);

/// Creates a missing file with this mode, whatever the mask of the process is: the library would choose another mode.
void makeFile(const std::string& path, unsigned int mode);

} // namespace vxtools
