#pragma once

#include "../tcp/Connections.h"
#include "Failures.h"
#include "Session.h"

#include <vx/io/IChannel.h>
#include <vx/io/vorb/IVXChannel.h>
#include <vx/vorb/FailureText.h>

#include <mutex>
#include <vector>

namespace vx::components {

/// A session over a socket. One thread may read while another one writes. The destructor announces the end to the peer
/// if that needs no waiting.
class TlsChannel final : public Object, public io::IChannel, public io::vorb::IVXChannel, public vorb::IVXFailureText {
public:
    /// `peer` names the other side in failures. `timeout` as in the settings.
    TlsChannel(Reference<net::TcpSocketHandle> socket, Reference<Session> session, int timeout, const String& peer);
    TlsChannel(const TlsChannel&) = delete;
    TlsChannel& operator=(const TlsChannel&) = delete;
    ~TlsChannel() noexcept override;

    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap();

    // IChannel
    int read(io::ByteBuffer& buffer) override;
    int write(io::ByteBuffer& buffer) override;

    // IVXChannel
    std::int32_t Read(signed char* bytes, std::int32_t* length) override;
    std::int32_t Write(const signed char* bytes, std::int32_t* length) override;
    std::int32_t GetInheritanceId(IVXCharBuffer* out) override;

    // IVXFailureText
    std::int32_t GetFailureText(IVXCharBuffer* text) override { return storeFailureText(text); }

    /// Returns when both sides know each other. Reads and writes do it first.
    void shakeHands();

private:
    std::int32_t receive(signed char* bytes, std::int32_t length);
    void send(const signed char* bytes, std::int32_t length);
    /// Passes bytes from the socket to the session, or the end; waits for them.
    void fetch(const Wait& wait);
    void feed(const signed char* bytes, std::int32_t length);
    /// Throws the reason that the peer gave before it broke the connection, if it has arrived.
    void hearReason();
    /// Fills m_unsent from the session.
    void collect();
    /// Sends m_unsent and what the session has; waits for room.
    void sendAll();
    /// As above, without waiting, if no other thread is sending. What cannot be sent stays; a failure shows in the next
    /// read or write.
    void sendSome() noexcept;
    IVXTlsSession::State state();
    /// Calls `work` with the session. Throws its failure, after telling the peer.
    template <class Work>
    void run(Work&& work);

    // Taken in this order. A thread that waits for the peer does not hold m_sessionLock.
    std::mutex m_handshakeLock;
    std::mutex m_inputLock;
    std::mutex m_outputLock;
    std::mutex m_sessionLock;
    const Reference<net::TcpSocketHandle> m_socket;
    const Reference<Session> m_session;
    const int m_timeout;
    const String m_peer;
    std::vector<signed char> m_unsent; ///< encrypted
};

} // namespace vx::components
