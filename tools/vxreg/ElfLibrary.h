#pragma once

#include "common/Messages.h"

#include <string>
#include <vector>

namespace vxreg {

/// What the symbol table of a shared library tells about it, read without loading the library.
struct ElfLibrary {
    std::vector<std::string> exported;
    /// Those of the exported symbols that are unique in a process.
    std::vector<std::string> unique;
};

/// Reads the file, which may have any content. Throws vxtools::Failure if it is not a shared library of the machine that
/// this program runs on, or if its tables do not lie within it.
ElfLibrary readElfLibrary(const std::string& path);

} // namespace vxreg
