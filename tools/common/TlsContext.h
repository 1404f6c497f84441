#pragma once

#include <components/tls/IVXTls.h>
#include <vx/Reference.h>

#include <string>

namespace vxtools {

/// Files in PEM form; an empty name is none.
struct TlsFiles {
    std::string authorities; ///< of the other side
    std::string certificate;
    std::string key; ///< of the certificate; without a name it is in the same file
};

/// Certificates and keys for the connections of one side. They need the component Velmaris.Transport.Tls. Thread-safe.
class TlsContext {
public:
    /// For connections to `host`. Throws Failure that names the file, or the component if it is not registered.
    static TlsContext forClient(const TlsFiles& files, const std::string& host);
    static TlsContext forServer(const TlsFiles& files);

    vx::Reference<vx::components::IVXTlsSession> createSession() const;

private:
    explicit TlsContext(vx::Reference<vx::components::IVXTlsContext> context);

    vx::Reference<vx::components::IVXTlsContext> m_context;
};

} // namespace vxtools
