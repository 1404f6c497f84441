#pragma once

#include "Context.h"

#include <concepts>

namespace vx::components {

/// A session over buffers in memory.
class Session final : public Object, public IVXTlsSession {
public:
    /// `serverName` is the host that a client expects.
    Session(std::unique_ptr<SSL, Releaser<SSL_free>> ssl, const String& serverName);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() noexcept override;

    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap();

    // IVXTlsSession
    std::int32_t GetState(std::int32_t* state) override;
    std::int32_t GetFailure(IVXCharBuffer* text) override;
    std::int32_t Feed(const signed char* bytes, std::int32_t* length) override;
    std::int32_t FeedEnd() override;
    std::int32_t TakePlain(signed char* bytes, std::int32_t* length) override;
    std::int32_t GivePlain(const signed char* bytes, std::int32_t* length) override;
    std::int32_t TakeEncrypted(signed char* bytes, std::int32_t* length) override;
    std::int32_t Close() override;

    /// Prepares the first message of a client. Call it once, first.
    void start(Context::Side side);
    /// Reads a failure that follows in the input, and takes nothing.
    std::int32_t look();
    State state() const noexcept { return m_state; }
    const String& failure() const noexcept { return m_failure; }

    /// The callback of OpenSSL for each certificate of the peer. Notes the name of one that is refused.
    static int checkCertificate(int isValid, X509_STORE_CTX* chain);

private:
    bool hasMuchToTake() const;
    void shakeHands();
    /// After a call of OpenSSL that gave `result`, which is no success.
    void examine(int result);
    void fail(const String& why);
    template <class Byte, std::invocable<int> Transfer>
    std::int32_t transfer(Byte* bytes, std::int32_t* length, Transfer&& work);

    std::unique_ptr<SSL, Releaser<SSL_free>> m_ssl;
    BIO* m_input = nullptr; ///< owned by m_ssl, as the next one
    BIO* m_output = nullptr;
    const String m_serverName;
    State m_state = HANDSHAKING;
    String m_failure;
    String m_refusedCertificate;
    bool m_isClosed = false; ///< this side
};

} // namespace vx::components
