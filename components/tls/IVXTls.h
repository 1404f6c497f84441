#pragma once

#include <vx/util/ICharBuffer.h>
#include <vx/util/vorb/IPropertySet.h>

#include <cstdint>

namespace vx::components {

// TLS without sockets, for programs that do their own input and output: event loops, for example. These interfaces
// are those of the component "Velmaris.Transport.Tls"; its `vx::vorb::IVXFailureText` has the text of a failure.

/// One connection. It never waits for the peer: the program passes on the bytes of both sides. One thread at a time.
///
/// After each read from its socket, and after `GivePlain` and `Close`, the program calls `TakePlain` until it gives 0
/// bytes, sends what `TakeEncrypted` gives, and then asks for the state. Memory is limited: `Feed` and `GivePlain` take
/// less than all as long as more than some 64 KiB wait to be taken.
///
/// In each transfer `*length` is the number of bytes or the size of the buffer, and becomes the number transferred.
class IVXTlsSession : public IVXUnknown {
public:
    using InterfaceType = IVXTlsSession;
    static constexpr _GUID IID {0x76097B12, 0x299F, 0x4314, {0xB0, 0x2A, 0xA9, 0x09, 0x03, 0x74, 0xE6, 0xEF}};

    enum State : std::int32_t {
        HANDSHAKING, ///< no plain bytes are taken or given yet
        OPEN,
        CLOSED, ///< the peer has announced its end, and all of its bytes were taken; it may still receive
        FAILED, ///< see `GetFailure`; there may be a last message for the peer in `TakeEncrypted`
    };

    virtual std::int32_t GetState(std::int32_t* state) = 0;
    /// Why the session has failed, on one line; otherwise empty.
    virtual std::int32_t GetFailure(IVXCharBuffer* text) = 0;

    /// Takes bytes that the peer sent. RESULT_FAIL once the session has failed, here and in the next three operations.
    virtual std::int32_t Feed(const signed char* bytes, std::int32_t* length) = 0;
    /// The socket has no more bytes. The session fails unless the peer has announced its end before: the connection
    /// was cut off. Bytes that arrived before are still given.
    virtual std::int32_t FeedEnd() = 0;
    /// Gives decrypted bytes.
    virtual std::int32_t TakePlain(signed char* bytes, std::int32_t* length) = 0;
    /// Takes bytes to encrypt. RESULT_NOT_AVAILABLE after `Close`.
    virtual std::int32_t GivePlain(const signed char* bytes, std::int32_t* length) = 0;
    /// Gives bytes to send to the peer.
    virtual std::int32_t TakeEncrypted(signed char* bytes, std::int32_t* length) = 0;
    /// Announces the end of this side to the peer, whose bytes may still be taken.
    virtual std::int32_t Close() = 0;

protected:
    ~IVXTlsSession() = default;
};

/// Certificates and keys in memory. Its operation is thread-safe.
class IVXTlsContext : public IVXUnknown {
public:
    using InterfaceType = IVXTlsContext;
    static constexpr _GUID IID {0xADFAA223, 0x4D59, 0x4F35, {0xB5, 0x61, 0x67, 0xF5, 0xA4, 0xD9, 0xEE, 0x51}};

    /// The result is a session, `IVXTlsSession` for example.
    virtual std::int32_t CreateSession(const _GUID& iid, void** result) = 0;

protected:
    ~IVXTlsContext() = default;
};

/// Creates contexts from the properties of the transport, of which host, port and timeout are not needed here. Reads
/// the files, and fails if they cannot be used.
class IVXTls : public IVXUnknown {
public:
    using InterfaceType = IVXTls;
    static constexpr _GUID IID {0x2357EFED, 0xC40E, 0x42ED, {0xA4, 0x78, 0xFC, 0x58, 0x41, 0x40, 0x05, 0xA2}};

    /// The result is a context, `IVXTlsContext` for example. Its sessions expect the server that "serverName" or else
    /// "host" names.
    virtual std::int32_t CreateClientContext(
        const util::vorb::IPropertySet* properties, const _GUID& iid, void** result)
        = 0;
    virtual std::int32_t CreateServerContext(
        const util::vorb::IPropertySet* properties, const _GUID& iid, void** result)
        = 0;

protected:
    ~IVXTls() = default;
};

} // namespace vx::components
