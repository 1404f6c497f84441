#include "vx/util/AbstractByteBuffer.h"

#include "vx/util/detail/BufferFaceImpl.h"

namespace vx::util {

template class detail::BufferFace<IVXByteBuffer, AbstractByteBuffer, signed char>;

AbstractByteBuffer::~AbstractByteBuffer() noexcept(false) = default;

const vorb::InterfaceData* AbstractByteBuffer::GetComIntfMap()
{
    static const vorb::InterfaceData map[]
        = {vorb::viewRow<AbstractByteBuffer, IVXByteBuffer>(), vorb::forwardRow<Object>(), vorb::endRow()};
    return map;
}

} // namespace vx::util
