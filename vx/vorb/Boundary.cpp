#include "vx/vorb/Boundary.h"

#include "vx/Exception.h"
#include "vxsys/Thread.h"

#include <new>

namespace vx::vorb {

std::int32_t resultOfCurrentException()
{
    try {
        throw;
    } catch (const Exception& failure) { // before bad_alloc: OutOfMemoryException is both
        return failure.getResult();
    } catch (const std::bad_alloc&) {
        return RESULT_OUT_OF_MEMORY;
    } catch (...) {
        vxsys::passForcedUnwind();
        return RESULT_FAIL;
    }
}

} // namespace vx::vorb
