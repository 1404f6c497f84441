#include "../ComponentLibrary.h"
#include "TcpTransport.h"

namespace vx::components {

namespace {

struct TcpClass {
    static constexpr _GUID ID {0x84B1D3E6, 0x0C29, 0x4A5D, {0xB8, 0x72, 0x6F, 0x15, 0x9E, 0x43, 0xD0, 0x2B}};
    static const char16_t* progId() { return u"Velmaris.Transport.Tcp"; }
    static const char16_t* description() { return u"Connections over TCP"; }
    static TcpTransport* make() { return new TcpTransport; }
};

} // namespace

} // namespace vx::components

VX_COMPONENT_LIBRARY(vx::components::libraryOf<vx::components::TcpClass>())
