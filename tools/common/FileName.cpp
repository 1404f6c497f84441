#include "FileName.h"

#include "Failure.h"
#include "Input.h"

#include <charconv>
#include <climits>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
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

std::optional<unsigned int> modeOf(const std::string& text)
{
    constexpr unsigned int MOST = 0777, OWNER_WRITES = 0200;
    constexpr int OCTAL = 8;
    unsigned int mode = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, mode, OCTAL);
    if (error != std::errc() || stop != end || mode > MOST || (mode & OWNER_WRITES) == 0)
        return std::nullopt;
    return mode;
}

void makeFile(const std::string& path, unsigned int mode)
{
    const int file = openFile(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (file >= 0) {
        ::fchmod(file, mode);
        ::close(file);
    }
}

} // namespace vxtools
