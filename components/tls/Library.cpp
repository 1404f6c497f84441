#include "../ComponentLibrary.h"
#include "TlsTransport.h"

#include <openssl/ssl.h>

namespace vx::components {

namespace {

constexpr _GUID CLASS_ID {0x9BA2A870, 0x2255, 0x4FD6, {0x96, 0xA8, 0xF7, 0xCA, 0xB5, 0xAE, 0x9C, 0x4C}};

TlsTransport* makeTransport()
{
    // At the end of the process OpenSSL would free what objects still use that are released after it.
    if (OPENSSL_init_ssl(OPENSSL_INIT_NO_ATEXIT, nullptr) != 1)
        throw ResultException(RESULT_FAIL, u"OpenSSL cannot be used");
    return new TlsTransport;
}

vorb::DllModule& library()
{
    static vorb::ClassData rows[] = {
        makerRow<makeTransport>(
            CLASS_ID, [] { return u"Velmaris.Transport.Tls"; }, [] { return u"Encrypted connections over TCP"; }),
        {},
    };
    static vorb::DllModule module(rows);
    return module;
}

} // namespace

} // namespace vx::components

VX_COMPONENT_LIBRARY(vx::components::library())
