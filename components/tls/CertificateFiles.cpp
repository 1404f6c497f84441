#include "CertificateFiles.h"

#include "Failures.h"

#include <vx/Exception.h>
#include <vx/Result.h>
#include <vx/io/FileInputStream.h>

#include <openssl/bio.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/pem.h>

namespace vx::components {

namespace {

[[noreturn]] void fail(const String& path, const String& why)
{
    throw ResultException(RESULT_FAIL, path + u": " + why);
}

/// The content of a file, which may be secret: it is overwritten at the end.
class Content {
public:
    explicit Content(const String& path)
    {
        constexpr std::size_t MOST = std::size_t {16} << 20; // a device may have no end
        constexpr std::int32_t STEP = 64 * 1024;
        io::FileInputStream file(path);
        for (std::int32_t got = 0; got >= 0;) {
            if (m_size > MOST)
                fail(path, u"the file is too large for certificates and keys");
            if (m_bytes.size() - m_size < STEP)
                grow();
            got = file.read(m_bytes.data() + m_size, STEP);
            m_size += got > 0 ? static_cast<std::size_t>(got) : 0;
        }
    }
    ~Content() { OPENSSL_cleanse(m_bytes.data(), m_bytes.size()); }
    Content(const Content&) = delete;
    Content& operator=(const Content&) = delete;

    std::unique_ptr<BIO, Releaser<BIO_free>> open() const
    {
        std::unique_ptr<BIO, Releaser<BIO_free>> source(BIO_new_mem_buf(m_bytes.data(), static_cast<int>(m_size)));
        if (source == nullptr)
            throwBadAllocation();
        return source;
    }

private:
    void grow()
    {
        std::vector<signed char> larger(2 * m_bytes.size() + 2 * 64 * 1024);
        std::copy_n(m_bytes.begin(), m_size, larger.begin());
        m_bytes.swap(larger);
        OPENSSL_cleanse(larger.data(), larger.size());
    }

    std::vector<signed char> m_bytes;
    std::size_t m_size = 0;
};

} // namespace

std::vector<Certificate> readCertificates(const String& path)
{
    const Content content(path);
    const auto source = content.open();
    std::vector<Certificate> certificates;
    ERR_clear_error();
    while (X509* const certificate = PEM_read_bio_X509_AUX(source.get(), nullptr, nullptr, nullptr))
        certificates.emplace_back(certificate);
    const bool isAtEnd = ERR_GET_REASON(ERR_peek_last_error()) == PEM_R_NO_START_LINE;
    const String reason = takeOpenSslReason();
    if (!isAtEnd)
        fail(path, u"a certificate cannot be read: " + reason);
    if (certificates.empty())
        fail(path, u"the file has no certificate in PEM form");
    return certificates;
}

Key readKey(const String& path)
{
    const Content content(path);
    const auto source = content.open();
    bool isProtected = false;
    const auto refuse = [](char*, int, int, void* asked) { // instead of a question at the terminal
        *static_cast<bool*>(asked) = true;
        return -1;
    };
    ERR_clear_error();
    Key key(PEM_read_bio_PrivateKey(source.get(), nullptr, refuse, &isProtected));
    if (key == nullptr) {
        const String reason = takeOpenSslReason();
        fail(path,
            isProtected ? String(u"the key is protected by a passphrase")
                        : u"the file has no private key in PEM form: " + reason);
    }
    return key;
}

} // namespace vx::components
