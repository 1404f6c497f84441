#include "TlsContext.h"

#include "Component.h"
#include "Failure.h"
#include "FileName.h"

#include <vx/util/PropertySet.h>
#include <vx/vorb/FailureText.h>
#include <vxsys/Component.h>

namespace vxtools {

using namespace vx;
using components::IVXTls;
using components::IVXTlsContext;
using components::IVXTlsSession;

namespace {

constexpr const char16_t* PROG_ID = u"Velmaris.Transport.Tls";
constexpr Message ENCRYPTION {u"tools.encryption", "encryption"};

void setFile(util::PropertySet& properties, const char16_t* key, const std::string& file)
{
    if (!file.empty())
        properties.set(key, canonicalPath(file));
}

Reference<IVXTlsContext> create(decltype(&IVXTls::CreateClientContext) operation, const util::PropertySet& properties)
{
    Reference<IVXTls> tls;
    if (const std::int32_t result = VXComCreateObjectByProgID(PROG_ID, nullptr, &IVXTls::IID, tls.outVoid());
        result < 0)
        throw Failure(ENCRYPTION(), noComponent(PROG_ID, TLS_LIBRARY, result));
    Reference<IVXTlsContext> context;
    try {
        vorb::throwIfFailedIn(*tls,
            ((*tls).*operation)(util::PropertySet::getVorb(properties).get(), IVXTlsContext::IID, context.outVoid()));
    } catch (const Exception& failure) {
        throw Failure(ENCRYPTION(), textOf(failure));
    }
    return context;
}

} // namespace

TlsContext::TlsContext(Reference<IVXTlsContext> context)
    : m_context(std::move(context))
{
}

TlsContext TlsContext::forClient(const TlsFiles& files, const std::string& host)
{
    util::PropertySet properties;
    properties.set(u"host", String(host));
    setFile(properties, u"ca", files.authorities);
    setFile(properties, u"cert", files.certificate);
    setFile(properties, u"key", files.key);
    return TlsContext(create(&IVXTls::CreateClientContext, properties));
}

TlsContext TlsContext::forServer(const TlsFiles& files)
{
    util::PropertySet properties;
    setFile(properties, u"clientCa", files.authorities);
    setFile(properties, u"cert", files.certificate);
    setFile(properties, u"key", files.key);
    return TlsContext(create(&IVXTls::CreateServerContext, properties));
}

Reference<IVXTlsSession> TlsContext::createSession() const
{
    Reference<IVXTlsSession> session;
    throwIfFailed(m_context->CreateSession(IVXTlsSession::IID, session.outVoid()));
    return session;
}

} // namespace vxtools
