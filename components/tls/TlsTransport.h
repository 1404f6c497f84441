#pragma once

#include "Context.h"

#include <vx/net/vorb/AbstractTransport.h>
#include <vx/vorb/FailureText.h>

namespace vx::components {

/// Encrypted channels over TCP: TLS 1.2 and later. A client always checks the certificate of its server. The properties
/// "host", "port" and "timeout" are those of `TcpTransport`, and further ones name files in PEM form:
///
/// - "ca": for a client, the authorities of servers; without it, those of the system.
/// - "cert": the own certificate, followed by others up to its authority. Each server needs one.
/// - "key": the private key for "cert", without a passphrase; without it, the key is in the file "cert".
/// - "clientCa": for a server, the authorities of clients. With it, each client must have a certificate.
/// - "serverName": the name or address for which the certificate of the server must be; without it, that is "host".
///
/// "timeout" also limits the whole handshake. `connect` returns after the handshake. `accept` returns before it, so that
/// no client can make others wait: the handshake is part of the first read or write of the channel.
///
/// The end of input is -1 only if the peer has announced it; otherwise the connection was cut off, which is a failure.
/// A failure that is not one of the socket has the code RESULT_FAIL. All objects have `IVXFailureText`.
class TlsTransport final : public net::vorb::AbstractTransport, public IVXTls, public vorb::IVXFailureText {
public:
    VX_OBJECT_UNKNOWN(AbstractTransport)
    static const vorb::InterfaceData* GetComIntfMap();

    // IVXTransport
    std::int32_t CreateAcceptor(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result) override;
    std::int32_t CreateConnector(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result) override;

    // ITransport
    Reference<net::IConnector> createConnector(const util::PropertySet& properties) override;
    Reference<net::IAcceptor> createAcceptor(const util::PropertySet& properties) override;

    // IVXTls
    std::int32_t CreateClientContext(
        const util::vorb::IPropertySet* properties, const _GUID& iid, void** result) override;
    std::int32_t CreateServerContext(
        const util::vorb::IPropertySet* properties, const _GUID& iid, void** result) override;

    // IVXFailureText
    std::int32_t GetFailureText(IVXCharBuffer* text) override;

private:
    std::int32_t createContext(
        Context::Side side, const util::vorb::IPropertySet* properties, const _GUID& iid, void** result);
};

} // namespace vx::components
