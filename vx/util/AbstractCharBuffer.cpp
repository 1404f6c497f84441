#include "vx/util/AbstractCharBuffer.h"

#include "vx/util/detail/BufferFaceImpl.h"

namespace vx::util {

template class detail::BufferFace<IVXCharBuffer, AbstractCharBuffer, char16_t>;

const vorb::InterfaceData* AbstractCharBuffer::GetComIntfMap()
{
    static const vorb::InterfaceData map[]
        = {vorb::viewRow<AbstractCharBuffer, IVXCharBuffer>(), vorb::forwardRow<Object>(), vorb::endRow()};
    return map;
}

} // namespace vx::util
