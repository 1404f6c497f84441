#include "Failures.h"

#include <algorithm>
#include <openssl/err.h>
#include <openssl/x509_vfy.h>
#include <string_view>

namespace vx::components {

namespace {

struct ReasonRow {
    int code;
    const char16_t* text;
};

constexpr const char16_t* UNKNOWN_AUTHORITY = u"it is from an unknown authority";

constexpr ReasonRow CERTIFICATE_REASONS[] = {
    {X509_V_ERR_CERT_HAS_EXPIRED, u"it has expired"},
    {X509_V_ERR_CERT_NOT_YET_VALID, u"it is not valid yet"},
    {X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT, UNKNOWN_AUTHORITY},
    {X509_V_ERR_HOSTNAME_MISMATCH, u"it is for another host"},
    {X509_V_ERR_INVALID_PURPOSE, u"it is for another purpose"},
    {X509_V_ERR_IP_ADDRESS_MISMATCH, u"it is for another address"},
    {X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN, UNKNOWN_AUTHORITY},
    {X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT, UNKNOWN_AUTHORITY},
    {X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY, UNKNOWN_AUTHORITY},
    {X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE, UNKNOWN_AUTHORITY},
};

constexpr const char16_t* NO_TLS = u"the peer does not speak TLS";
constexpr const char16_t* OLD_TLS = u"the peer does not speak TLS 1.2 or later";

constexpr ReasonRow REASONS[] = {
    {SSL_R_HTTP_REQUEST, NO_TLS},
    {SSL_R_NO_SHARED_CIPHER, u"the peer has no cipher in common"},
    {SSL_R_PEER_DID_NOT_RETURN_A_CERTIFICATE, u"the peer has no certificate"},
    {SSL_R_UNEXPECTED_EOF_WHILE_READING, u"the connection was cut off: the peer did not announce its end"},
    {SSL_R_UNSUPPORTED_PROTOCOL, OLD_TLS},
    {SSL_R_VERSION_TOO_LOW, OLD_TLS},
    {SSL_R_WRONG_VERSION_NUMBER, NO_TLS},
};

template <std::size_t SIZE>
const char16_t* find(const ReasonRow (&rows)[SIZE], int code)
{
    const auto row = std::ranges::find(rows, code, &ReasonRow::code);
    return row != std::end(rows) ? row->text : nullptr;
}

String textOf(const char* text)
{
    return String(std::string_view(text != nullptr ? text : "unknown failure"));
}

/// What the peer said about its reason, such as "certificate expired". OpenSSL names it after the word "alert".
String textOfAlert(unsigned long error)
{
    constexpr std::string_view MARK = "alert ";
    const char* const reason = ERR_reason_error_string(error);
    std::string_view text(reason != nullptr ? reason : "unknown reason");
    if (const std::size_t mark = text.find(MARK); mark != text.npos)
        text.remove_prefix(mark + MARK.size());
    return u"the peer refuses the connection: " + String(text);
}

} // namespace

String takeOpenSslReason()
{
    const unsigned long first = ERR_peek_error(); // the cause; later ones only say which calls have failed
    const String text = textOf(first != 0 ? ERR_reason_error_string(first) : nullptr);
    ERR_clear_error();
    return text;
}

String takeReasonOf(const SSL* ssl)
{
    const unsigned long first = ERR_peek_error();
    const int reason = ERR_GET_REASON(first);
    if (ERR_GET_LIB(first) != ERR_LIB_SSL)
        return takeOpenSslReason();
    ERR_clear_error();
    if (reason == SSL_R_CERTIFICATE_VERIFY_FAILED) {
        const long verified = SSL_get_verify_result(ssl);
        const char16_t* const text = find(CERTIFICATE_REASONS, static_cast<int>(verified));
        return text != nullptr ? text : textOf(X509_verify_cert_error_string(verified));
    }
    if (reason >= SSL_AD_REASON_OFFSET)
        return textOfAlert(first);
    const char16_t* const text = find(REASONS, reason);
    return text != nullptr ? text : textOf(ERR_reason_error_string(first));
}

} // namespace vx::components
