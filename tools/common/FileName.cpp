#include "FileName.h"

#include "Failure.h"

#include <climits>
#include <filesystem>
#include <unistd.h>

namespace vxtools {

std::string followLinks(std::string path)
{
    constexpr int MOST_LINKS = 40; // the limit of the kernel
    for (int links = 0; links < MOST_LINKS; ++links) {
        char target[PATH_MAX];
        const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
        if (length < 0)
            break;
        const std::string name(target, static_cast<std::size_t>(length));
        if (name[0] == '/')
            path.clear();
        path.resize(path.rfind('/') + 1);
        path += name;
    }
    return path;
}

vx::String canonicalPath(const std::string& file)
{
    if (file.find('\\') != file.npos)
        throw Failure(file, BACKSLASH());
    std::error_code error;
    std::filesystem::path path = std::filesystem::absolute(followLinks(file), error);
    if (!error)
        path = std::filesystem::weakly_canonical(path, error);
    if (error)
        throw Failure(file, error.message());
    const vx::String text(path.native());
    if (text.toUtf8() != path.native())
        throw Failure(file, NOT_UTF_8()); // the text would name another file
    return text;
}

} // namespace vxtools
