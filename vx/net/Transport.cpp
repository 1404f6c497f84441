#include "vx/net/Transport.h"

#include "vx/net/vorb/VorbTransport.h"

#include <new>

namespace vx::net {

Reference<ITransport> Transport::get(const String& progId)
{
    try {
        return new vorb::VorbTransport(progId);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace vx::net
