#pragma once

#include "TlsContext.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace vxtools {

/// The bytes of a connected socket, encrypted or not, for a program that waits by itself. No call waits, and none but
/// the constructor throws anything else than std::bad_alloc.
class Wire {
public:
    enum class Result {
        DONE,
        LATER, ///< wait first
        CLOSED, ///< the other side has ended its output
        BROKEN ///< see `reason`
    };

    /// The socket is not owned, and is closed after this object. A null `tls` is a connection without encryption.
    Wire(unsigned int socket, const TlsContext* tls);
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;
    /// Ends the output as far as that needs no waiting.
    ~Wire();

    /// Goes on with the handshake: LATER until both sides know each other. A server need not call it.
    Result shakeHands();
    /// Appends the next bytes, some `size` or fewer; at least one if the result is DONE. If there are none, `bytes` gets no
    /// memory.
    Result receive(std::string& bytes, std::size_t size);
    /// Reads bytes that are of no more use. A connection that is closed while bytes are unread is reset, and the other
    /// side may lose what was sent to it.
    Result drop();
    /// Takes the first of `bytes` and removes them, or none if the result is LATER. Also sends what waits here.
    Result send(std::string_view& bytes);
    /// Tells the other side that nothing more comes, once all that waits here is sent.
    void endOutput();
    /// Whether to call `send` when the socket has room. `hasMore` says whether there are bytes for it.
    bool wantsToWrite(bool hasMore) const;
    /// Whether to call `receive` when the socket has bytes. False while much waits to be sent.
    bool wantsToRead() const;
    /// Why the connection is broken.
    const std::string& reason() const noexcept { return m_reason; }

private:
    using Session = vx::components::IVXTlsSession;

    std::int32_t state() const;
    Result receivePlain(std::string& bytes, std::size_t size);
    Result sendPlain(std::string_view& bytes);
    /// Appends what the session has.
    Result takePlain(std::string& bytes);
    /// Passes bytes from the socket to the session.
    Result fetch();
    Result flush();
    /// As above; a failure shows when the other side can no longer be heard.
    void flushQuietly();
    Result failSession();
    Result failSocket(std::int32_t error);

    const unsigned int m_socket;
    vx::Reference<Session> m_session;
    std::string m_unsent; ///< encrypted
    bool m_isEnding = false;
    std::string m_reason;
};

} // namespace vxtools
