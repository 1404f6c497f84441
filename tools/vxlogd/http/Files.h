#pragma once

#include <cstddef>
#include <span>

namespace vxlogd::http {

/// A file of the page, which the build puts into the program.
struct File {
    const char* path; ///< of the request
    const char* type;
    const unsigned char* bytes;
    std::size_t size;
};

extern const std::span<const File> FILES;

} // namespace vxlogd::http
