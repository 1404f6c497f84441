#include "Context.h"

#include "../ComponentLibrary.h"
#include "../tcp/Connections.h"
#include "CertificateFiles.h"
#include "Failures.h"
#include "Session.h"

#include <vx/Exception.h>
#include <vx/Result.h>

#include <iterator>

namespace vx::components {

namespace {

String pathProperty(const util::PropertySet& properties, const char16_t* key)
{
    return properties.hasProperty(key) ? properties.get(key) : String();
}

/// One that the other side trusts at once is enough for a chain: the file may have a certificate below the root.
void trust(SSL_CTX* context, const String& path)
{
    for (const Certificate& certificate : readCertificates(path)) {
        if (X509_STORE_add_cert(SSL_CTX_get_cert_store(context), certificate.get()) != 1)
            throw ResultException(RESULT_FAIL, path + u": " + takeOpenSslReason());
    }
    X509_VERIFY_PARAM_set_flags(SSL_CTX_get0_param(context), X509_V_FLAG_PARTIAL_CHAIN);
}

/// The first certificate of the file is that of this side; the others lead to its authority.
void present(SSL_CTX* context, const String& certificatePath, const String& keyPath)
{
    const std::vector<Certificate> chain = readCertificates(certificatePath);
    bool fits = SSL_CTX_use_certificate(context, chain.front().get()) == 1;
    for (std::size_t index = 1; fits && index < chain.size(); ++index)
        fits = SSL_CTX_add1_chain_cert(context, chain[index].get()) == 1;
    if (!fits)
        throw ResultException(RESULT_FAIL, certificatePath + u": " + takeOpenSslReason());
    const Key key = readKey(keyPath);
    if (X509_check_private_key(chain.front().get(), key.get()) != 1) {
        takeOpenSslReason();
        throw ResultException(
            RESULT_FAIL, keyPath + u": the key does not belong to the certificate in " + certificatePath);
    }
    if (SSL_CTX_use_PrivateKey(context, key.get()) != 1)
        throw ResultException(RESULT_FAIL, keyPath + u": " + takeOpenSslReason());
}

/// Tells clients which authorities a server accepts, so that they can choose a certificate.
void announceAuthorities(SSL_CTX* context, const String& path)
{
    for (const Certificate& certificate : readCertificates(path)) {
        if (SSL_CTX_add_client_CA(context, certificate.get()) != 1)
            throwBadAllocation();
    }
}

} // namespace

Context::Context(Side side, const util::PropertySet& properties)
    : m_side(side)
    , m_context(SSL_CTX_new(TLS_method()))
{
    SSL_CTX* const context = m_context.get();
    if (context == nullptr)
        throwBadAllocation();
    SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION);
    SSL_CTX_set_options(context, SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION | SSL_OP_CIPHER_SERVER_PREFERENCE);
    SSL_CTX_set_mode(context, SSL_MODE_RELEASE_BUFFERS); // a server may have thousands of idle connections
    SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_OFF); // tickets need no memory here

    const String certificate = pathProperty(properties, u"cert");
    const String key = pathProperty(properties, u"key");
    if (certificate.isEmpty() && (side == Side::SERVER || !key.isEmpty()))
        throw ResultException(RESULT_INVALID_ARGUMENT, u"cert, the file of a certificate, is missing");
    if (!certificate.isEmpty())
        present(context, certificate, key.isEmpty() ? certificate : key);

    if (side == Side::CLIENT) {
        m_serverName = hostProperty(properties, u"serverName", hostProperty(properties, u"host", u"127.0.0.1"));
        SSL_CTX_set_verify(context, SSL_VERIFY_PEER, Session::checkCertificate);
        if (const String authorities = pathProperty(properties, u"ca"); !authorities.isEmpty())
            trust(context, authorities);
        else if (SSL_CTX_set_default_verify_paths(context) != 1)
            throw ResultException(RESULT_FAIL, u"the authorities of the system: " + takeOpenSslReason());
    } else if (const String authorities = pathProperty(properties, u"clientCa"); !authorities.isEmpty()) {
        constexpr unsigned char ID[] = "vxtls"; // without one, clients could not resume their sessions
        SSL_CTX_set_session_id_context(context, ID, sizeof ID);
        SSL_CTX_set_verify(context, SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, Session::checkCertificate);
        trust(context, authorities);
        announceAuthorities(context, authorities);
    }
}

const vorb::InterfaceData* Context::GetComIntfMap()
{
    static const vorb::InterfaceData map[]
        = {vorb::viewRow<Context, IVXTlsContext>(), vorb::forwardRow<Object>(), vorb::endRow()};
    return map;
}

std::int32_t Context::CreateSession(const _GUID& iid, void** result)
{
    if (result == nullptr)
        return RESULT_POINTER;
    *result = nullptr;
    return vorb::resultAtBoundary([&] { return newSession()->QueryInterface(iid, result); });
}

Reference<Session> Context::newSession()
{
    std::unique_ptr<SSL, Releaser<SSL_free>> ssl(SSL_new(m_context.get()));
    if (ssl == nullptr)
        throwBadAllocation();
    const Reference<Session> session = inModule(GetComModule(), new Session(std::move(ssl), m_serverName));
    session->start(m_side);
    return session;
}

} // namespace vx::components
