#include "vx/io/FileInputStream.h"

#include "vx/Exception.h"
#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vx/detail/ReleaseReport.h"
#include "vx/io/detail/OpenFile.h"
#include "vx/util/FilePath.h"
#include "vxsys/File.h"

#include <utility>

namespace vx::io {

namespace {

constexpr std::int32_t END_OF_STREAM = -1;

} // namespace

FileInputStream::FileInputStream(std::uint32_t handle, bool owned)
    : m_handle(handle)
    , m_owned(owned)
{
}

FileInputStream::FileInputStream(const String& path)
    : FileInputStream(openFile(path), true)
{
    m_path = path;
}

FileInputStream::FileInputStream(const util::FilePath& path)
    : FileInputStream(path.toString())
{
}

FileInputStream::~FileInputStream() noexcept(false)
{
    vx::detail::ReleaseReport::ofDestructor().run([this] { close(); });
}

std::int32_t FileInputStream::read(signed char* target, std::int32_t length)
{
    std::int32_t done = 0;
    const std::int32_t result = VXFileRead(m_handle, target, length, &done);
    if (result == RESULT_END_OF_FILE)
        return END_OF_STREAM;
    throwIfFailed(result, u"read", m_path);
    return done > 0 ? done : END_OF_STREAM;
}

void FileInputStream::close()
{
    // The system frees a handle even if closing it failed, and may give its number to the next file.
    if (m_owned && m_handle != VX_FILE_INVALID_HANDLE)
        throwIfFailed(VXFileClose(std::exchange(m_handle, VX_FILE_INVALID_HANDLE)), u"close", m_path);
}

std::uint32_t FileInputStream::getHandle()
{
    return m_handle;
}

std::uint32_t FileInputStream::openFile(const String& path)
{
    return detail::openFile(path, VX_FILE_READ);
}

} // namespace vx::io
