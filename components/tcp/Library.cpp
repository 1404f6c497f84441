#include "../ComponentLibrary.h"
#include "TcpTransport.h"

namespace vx::components {

namespace {

constexpr _GUID CLASS_ID {0x84B1D3E6, 0x0C29, 0x4A5D, {0xB8, 0x72, 0x6F, 0x15, 0x9E, 0x43, 0xD0, 0x2B}};

TcpTransport* makeTransport()
{
    return new TcpTransport;
}

vorb::DllModule& library()
{
    static vorb::ClassData rows[] = {
        makerRow<makeTransport>(
            CLASS_ID, [] { return u"Velmaris.Transport.Tcp"; }, [] { return u"Connections over TCP"; }),
        {},
    };
    static vorb::DllModule module(rows);
    return module;
}

} // namespace

} // namespace vx::components

VX_COMPONENT_LIBRARY(vx::components::library())
