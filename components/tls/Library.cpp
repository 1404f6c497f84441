#include "../ComponentLibrary.h"
#include "TlsTransport.h"

#include <openssl/ssl.h>

namespace vx::components {

namespace {

struct TlsClass {
    static constexpr _GUID ID {0x9BA2A870, 0x2255, 0x4FD6, {0x96, 0xA8, 0xF7, 0xCA, 0xB5, 0xAE, 0x9C, 0x4C}};
    static const char16_t* progId() { return u"Velmaris.Transport.Tls"; }
    static const char16_t* description() { return u"Encrypted connections over TCP"; }

    static TlsTransport* make()
    {
        // At the end of the process OpenSSL would free what objects still use that are released after it.
        if (OPENSSL_init_ssl(OPENSSL_INIT_NO_ATEXIT, nullptr) != 1)
            throw ResultException(RESULT_FAIL, u"OpenSSL cannot be used");
        return new TlsTransport;
    }
};

} // namespace

} // namespace vx::components

VX_COMPONENT_LIBRARY(vx::components::libraryOf<vx::components::TlsClass>())
