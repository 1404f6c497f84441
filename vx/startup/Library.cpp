#include "vx/Library.h"

#include "vx/ClassManagerBase.h"
#include "vx/Exceptions.h"
#include "vx/GlobalLock.h"
#include "vx/detail/Occasions.h"
#include "vx/detail/OwnModule.h"
#include "vx/net/TcpSocket2.h"
#include "vx/startup/detail/ClassTable.h"
#include "vx/startup/detail/KeyClasses.h"
#include "vx/sync/Mutex.h"
#include "vx/text/charset/detail/CodecStart.h"
#include "vx/vorb/Boundary.h"
#include "vxsys/Memory.h"
#include "vxsys/Thread.h"

#include <clocale>
#include <utility>

constinit vx::sync::LockObject* g_pGlobalLock = nullptr;

namespace vx {

namespace {

// The loader never runs start and stop at the same time.
constinit int g_starts = 0;
constinit VXNewHandler g_replacedHandler = nullptr;
constinit const void* g_ownModule = nullptr;

[[noreturn]] void outOfMemory()
{
    throw OutOfMemoryException();
}

void start()
{
    std::setlocale(LC_ALL, "");
    g_replacedHandler = VXSetNewHandler(outOfMemory);
    g_pGlobalLock = new sync::Mutex("VXLIB::g_pGlobalLock");
    startup::detail::registerClasses(*ClassManager::getInstance());
    startup::detail::registerKeyClasses();
    text::charset::detail::registerCodecs();
    text::charset::detail::buildEncInfo();
}

void stop()
{
    VXThreadJoinLeft(); // these threads run code of this library
    text::charset::detail::freeEncInfo();
    text::charset::detail::freeCodecs();
    ClassManager::freeInstance();
    if (const ENUM_VX_E_SOCKET failure = net::TcpSocket2::uninit(); failure != VX_E_SOCKET_OK)
        throw Exception(u"VXLIBLibUninit " + String(VXGetDescriptionFromVX_E_SOCKET(failure)));
    delete std::exchange(g_pGlobalLock, nullptr); // throws if a thread holds it
    VXSetNewHandler(g_replacedHandler);
    detail::freeOccasions();
}

} // namespace

namespace detail {

const void* getOwnModule() noexcept
{
    return g_ownModule;
}

void setOwnModule(const void* module) noexcept
{
    g_ownModule = module;
}

} // namespace detail

} // namespace vx

std::int32_t VXLIBLibInit(void)
{
    return vx::vorb::atBoundary([] {
        if (++vx::g_starts == 1)
            vx::start();
    });
}

std::int32_t VXLIBLibUninit(void)
{
    if (vx::g_starts <= 0)
        return vx::RESULT_FAIL;
    return vx::vorb::atBoundary([] {
        if (--vx::g_starts == 0)
            vx::stop();
    });
}
