#pragma once

#include "IVXTls.h"

#include <vx/Object.h>
#include <vx/Reference.h>
#include <vx/String.h>
#include <vx/util/PropertySet.h>

#include <memory>
#include <openssl/ssl.h>

namespace vx::components {

class Session;

/// A deleter that calls a function of OpenSSL.
template <auto release>
struct Releaser {
    void operator()(auto* object) const noexcept { release(object); }
};

/// What the sessions of one side share: certificates, keys and rules.
class Context final : public Object, public IVXTlsContext {
public:
    enum class Side { CLIENT, SERVER };

    /// Reads the files that the properties name. Throws ResultException that names the file, or the property that is
    /// missing.
    Context(Side side, const util::PropertySet& properties);

    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap();

    // IVXTlsContext
    std::int32_t CreateSession(const _GUID& iid, void** result) override;

    Reference<Session> newSession();

private:
    const Side m_side;
    const std::unique_ptr<SSL_CTX, Releaser<SSL_CTX_free>> m_context;
    String m_serverName; ///< the host that the server's certificate must be for
};

} // namespace vx::components
