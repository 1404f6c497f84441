#include "Codec.h"

#include <vx/Result.h>
#include <vx/util/BufferLocks.h>
#include <vx/util/CopyCharBuffer.h>
#include <vx/vorb/Boundary.h>

#include <algorithm>

namespace vx::components {

namespace {

constexpr std::uint32_t REPLACEMENT = 0xFFFD;

} // namespace

const vorb::InterfaceData* Codec::GetComIntfMap()
{
    static const vorb::InterfaceData map[]
        = {vorb::viewRow<Codec, IVXCharCodec>(), vorb::forwardRow<Object>(), vorb::endRow()};
    return map;
}

std::int32_t Codec::GetName(IVXCharBuffer* name)
{
    return vorb::atBoundary([&] {
        String text(m_page.name());
        VXCopyCharBuffer(name, &text);
    });
}

std::int32_t Codec::GetMaxBytesPerChar(std::int32_t* value)
{
    return vorb::atBoundary(value, [&] { return m_page.maxBytesPerChar; });
}

std::int32_t Codec::GetMaxCharsPerByte(std::int32_t* value)
{
    return vorb::atBoundary(value, [] { return 1; });
}

std::int32_t Codec::ConvertBytes(const signed char* bytes, std::int32_t* length, std::uint32_t* codePoint)
{
    if (bytes == nullptr || length == nullptr || codePoint == nullptr)
        return RESULT_POINTER;
    *codePoint = REPLACEMENT;
    *length = *length > 0 ? decode(bytes, *length, *codePoint) : 0;
    return RESULT_OK;
}

std::int32_t Codec::ConvertChar(std::uint32_t codePoint, IVXByteBuffer* bytes)
{
    if (bytes == nullptr)
        return RESULT_POINTER;
    char encoded[MOST_BYTES];
    const int count = encode(codePoint, encoded);
    if (count == 0)
        return RESULT_UNMAPPABLE_CHARACTER;
    return vorb::atBoundary([&] {
        util::ByteWriteLock target(*bytes, count);
        std::copy_n(encoded, count, target.data());
        target.setLength(count);
    });
}

} // namespace vx::components
