#include "Session.h"

#include "Failures.h"

#include <vx/Result.h>
#include <vx/util/CopyCharBuffer.h>

#include <algorithm>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/x509v3.h>
#include <string>

namespace vx::components {

namespace {

constexpr int MOST_WAITING = 64 * 1024; ///< bytes in each direction; the longest record has some 18 KiB

int waitingIn(BIO* buffer)
{
    return static_cast<int>(BIO_pending(buffer));
}

/// "CN = localhost".
String nameOf(X509* certificate)
{
    const std::unique_ptr<BIO, Releaser<BIO_free>> text(BIO_new(BIO_s_mem()));
    if (certificate == nullptr || text == nullptr)
        return {};
    constexpr unsigned long FORM = XN_FLAG_ONELINE & ~static_cast<unsigned long>(ASN1_STRFLGS_ESC_MSB); // in UTF-8
    X509_NAME_print_ex(text.get(), X509_get_subject_name(certificate), 0, FORM);
    char* bytes = nullptr;
    const long length = BIO_get_mem_data(text.get(), &bytes);
    return String(std::string_view(bytes, static_cast<std::size_t>(length)));
}

/// Makes `ssl` accept only a certificate for `server`, and tells the server which one is meant.
void expect(SSL* ssl, const String& server)
{
    std::string name = server.toUtf8();
    if (name.ends_with('.')) // certificates have names without it
        name.pop_back();
    X509_VERIFY_PARAM* const rules = SSL_get0_param(ssl);
    if (X509_VERIFY_PARAM_set1_ip_asc(rules, name.c_str()) == 1)
        return;
    X509_VERIFY_PARAM_set_hostflags(rules, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
    if (name.empty() || X509_VERIFY_PARAM_set1_host(rules, name.c_str(), name.size()) != 1
        || SSL_set_tlsext_host_name(ssl, name.c_str()) != 1) {
        ERR_clear_error();
        throw ResultException(RESULT_INVALID_ARGUMENT, u"no name of a server: " + server);
    }
}

} // namespace

Session::Session(std::unique_ptr<SSL, Releaser<SSL_free>> ssl, const String& serverName)
    : m_ssl(std::move(ssl))
    , m_serverName(serverName)
{
    m_input = BIO_new(BIO_s_mem());
    m_output = BIO_new(BIO_s_mem());
    SSL_set_bio(m_ssl.get(), m_input, m_output); // takes both, also if one is null
    if (m_input == nullptr || m_output == nullptr)
        throwBadAllocation();
    SSL_set_app_data(m_ssl.get(), this);
}

Session::~Session() noexcept = default;

const vorb::InterfaceData* Session::GetComIntfMap()
{
    static const vorb::InterfaceData map[]
        = {vorb::viewRow<Session, IVXTlsSession>(), vorb::forwardRow<Object>(), vorb::endRow()};
    return map;
}

void Session::start(Context::Side side)
{
    if (side == Context::Side::SERVER) {
        SSL_set_accept_state(m_ssl.get());
        return;
    }
    SSL_set_connect_state(m_ssl.get());
    expect(m_ssl.get(), m_serverName);
    shakeHands();
}

std::int32_t Session::GetState(std::int32_t* state)
{
    return vorb::atBoundary(state, [&] { return std::int32_t {m_state}; });
}

std::int32_t Session::GetFailure(IVXCharBuffer* text)
{
    return vorb::atBoundary([&] { VXCopyCharBuffer(text, &m_failure); });
}

std::int32_t Session::Feed(const signed char* bytes, std::int32_t* length)
{
    return transfer(bytes, length, [&](int size) {
        if (hasMuchToTake())
            return 0;
        const int room = std::min(size, MOST_WAITING - waitingIn(m_input));
        if (room > 0 && BIO_write(m_input, bytes, room) != room)
            throwBadAllocation();
        shakeHands();
        return room;
    });
}

std::int32_t Session::FeedEnd()
{
    return vorb::resultAtBoundary([&] {
        BIO_set_mem_eof_return(m_input, 0); // a read of the empty buffer is now the end, and no wait for more
        shakeHands();
        return m_state == FAILED ? RESULT_FAIL : RESULT_OK;
    });
}

std::int32_t Session::TakePlain(signed char* bytes, std::int32_t* length)
{
    return transfer(bytes, length, [&](int size) {
        if (m_state != OPEN || size == 0)
            return 0;
        const int count = SSL_read(m_ssl.get(), bytes, size);
        if (count <= 0)
            examine(count);
        return std::max(count, 0);
    });
}

std::int32_t Session::GivePlain(const signed char* bytes, std::int32_t* length)
{
    if (m_isClosed) {
        if (length != nullptr)
            *length = 0;
        return RESULT_NOT_AVAILABLE;
    }
    return transfer(bytes, length, [&](int size) {
        constexpr int RECORD = 16 * 1024;
        int given = 0;
        while (m_state != HANDSHAKING && m_state != FAILED && given < size && !hasMuchToTake()) {
            const int count = SSL_write(m_ssl.get(), bytes + given, std::min(size - given, RECORD));
            if (count <= 0) {
                examine(count);
                break;
            }
            given += count;
        }
        return given;
    });
}

std::int32_t Session::TakeEncrypted(signed char* bytes, std::int32_t* length)
{
    if (length == nullptr || (bytes == nullptr && *length != 0))
        return RESULT_POINTER;
    *length = *length > 0 ? std::max(BIO_read(m_output, bytes, *length), 0) : 0;
    return RESULT_OK;
}

std::int32_t Session::Close()
{
    return vorb::atBoundary([&] {
        if (std::exchange(m_isClosed, true) || m_state == HANDSHAKING || m_state == FAILED)
            return;
        ERR_clear_error();
        SSL_shutdown(m_ssl.get());
        ERR_clear_error();
    });
}

std::int32_t Session::look()
{
    signed char byte = 0;
    std::int32_t length = 1;
    return transfer(&byte, &length, [&](int size) {
        if (m_state == OPEN) {
            if (const int count = SSL_peek(m_ssl.get(), &byte, size); count <= 0)
                examine(count);
        }
        return 0;
    });
}

int Session::checkCertificate(int isValid, X509_STORE_CTX* chain)
{
    if (isValid == 1)
        return 1;
    const auto* const ssl
        = static_cast<const SSL*>(X509_STORE_CTX_get_ex_data(chain, SSL_get_ex_data_X509_STORE_CTX_idx()));
    auto* const session = static_cast<Session*>(SSL_get_app_data(ssl));
    try {
        session->m_refusedCertificate = nameOf(X509_STORE_CTX_get_current_cert(chain));
    } catch (const std::bad_alloc&) { // OpenSSL has no exceptions, and the certificate is refused without its name
    }
    return 0;
}

bool Session::hasMuchToTake() const
{
    return waitingIn(m_output) >= MOST_WAITING;
}

void Session::shakeHands()
{
    if (m_state != HANDSHAKING)
        return;
    ERR_clear_error();
    const int result = SSL_do_handshake(m_ssl.get());
    if (result == 1)
        m_state = OPEN;
    else
        examine(result);
}

void Session::examine(int result)
{
    switch (SSL_get_error(m_ssl.get(), result)) {
    case SSL_ERROR_WANT_READ:
    case SSL_ERROR_WANT_WRITE:
        return;
    case SSL_ERROR_ZERO_RETURN:
        if (m_state == HANDSHAKING)
            fail(u"the peer has closed the connection during the handshake");
        else
            m_state = CLOSED;
        return;
    default:
        const String reason = takeReasonOf(m_ssl.get());
        const bool isRefusal = m_state == HANDSHAKING && SSL_get_verify_result(m_ssl.get()) != X509_V_OK;
        fail(isRefusal ? u"the certificate " + m_refusedCertificate + u" is refused: " + reason : reason);
    }
}

void Session::fail(const String& why)
{
    m_failure = why;
    m_state = FAILED;
}

template <class Byte, std::invocable<int> Transfer>
std::int32_t Session::transfer(Byte* bytes, std::int32_t* length, Transfer&& work)
{
    if (length == nullptr || (bytes == nullptr && *length != 0))
        return RESULT_POINTER;
    const std::int32_t size = std::exchange(*length, 0);
    if (size < 0)
        return RESULT_INVALID_ARGUMENT;
    return vorb::resultAtBoundary([&] {
        if (m_state != FAILED) {
            ERR_clear_error();
            *length = std::forward<Transfer>(work)(size);
        }
        return m_state == FAILED ? RESULT_FAIL : RESULT_OK;
    });
}

} // namespace vx::components
