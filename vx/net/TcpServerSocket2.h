#pragma once

#include "vx/net/InetSocketAddress.h"
#include "vx/net/TcpSocket2.h"

#include <array>
#include <memory>

namespace vx::net {

class TcpWorkerSocket2;

/// One listening endpoint on up to 20 native sockets. In order: collect addresses in the bind list, `bind`, `listen`,
/// `saveBoundAddresses`, `accept` again and again, `close`.
///
/// Each address gets a socket of its own, and an IPv6 socket serves IPv6 alone, so that the wildcards of both families
/// stand on one port side by side.
class VX_API TcpServerSocket2 : public TcpSocket2 {
public:
    /// The arguments are kept for the native sockets, which `bind` opens, each in the family of its address. The caller
    /// deletes the object, by `destroyTcpSocket2` say.
    static ENUM_VX_E_SOCKET createTcpServerSocket2(int domain, int type, int protocol, TcpServerSocket2** out);
    /// Shuts the output down and closes, unless that is done.
    ~TcpServerSocket2() override;

    // TcpSocket2
    /// The object's own address, in 32 bits and never 0: it stands for all the sockets.
    unsigned int getId() override;
    ENUM_VX_E_SOCKET shutdownInput() override;
    ENUM_VX_E_SOCKET shutdownOutput() override;
    ENUM_VX_E_SOCKET shutdownBoth() override;
    ENUM_VX_E_SOCKET close() override;

    /// Adds the wildcard address of IPv6, then that of IPv4. VX_E_SOCKET_EFAULT if either could not be added.
    ENUM_VX_E_SOCKET bindListAddAddrAny(unsigned short port);
    /// Adds every address of the hosts in a list with commas; blanks behind a comma do not count. Port 0 asks for that of
    /// `service`, else `service` may be null. The result is that of the last host; VX_E_SOCKET_HOST_NOT_FOUND where it
    /// added nothing. Wildcard addresses and those beyond the room are passed over.
    ENUM_VX_E_SOCKET bindListAddAddrInfo(const char* hosts, const char* service, unsigned short port);
    void bindListClear();
    void boundListClear();
    /// Forgets the native sockets without closing them; their number stays.
    void socketListClear();
    /// For a server that tells its clients one address over another road and opens no socket itself: keeps the address if
    /// there is exactly one, and empties the bind list. `saveBoundAddresses` then publishes it.
    ENUM_VX_E_SOCKET bindListSaveOneForNamedPipeReply();
    /// Whether `bind` may take a port on which connections of an earlier server, which had this set too, are still ending:
    /// without it `bind` fails with VX_E_SOCKET_EADDRINUSE for about a minute after a restart. A port on which a socket
    /// listens stays taken; to find that out `bind` itself begins to listen. For later calls of `bind`; off at first.
    void setReuseAddress(bool reuses) { m_reusesAddress = reuses; }
    /// Opens and binds a socket for each entry of the bind list. One that stands is success, whatever the others met.
    ENUM_VX_E_SOCKET bind();
    /// A `backlog` below 1 is the system's most.
    ENUM_VX_E_SOCKET listen(int backlog);
    /// Appends to the bound list what the sockets are bound to, with the real port where port 0 was asked for.
    ENUM_VX_E_SOCKET saveBoundAddresses();
    /// Copies a bound address in the system's form. `*length` is the room and becomes what was copied.
    ENUM_VX_E_SOCKET getBoundAddress(std::uint32_t index, signed char* address, unsigned int* length);
    /// Waits without limit for a connection on any of the sockets; the first in the list wins. Success with nothing is
    /// possible where a connection is gone again.
    ENUM_VX_E_SOCKET accept(TcpWorkerSocket2** out);
    /// The connection as a native socket, all bits 1 for none.
    ENUM_VX_E_SOCKET accept(unsigned int* socket);
    /// "[::]:9000; 0.0.0.0:9000" in the default encoding. `*length` is the room in `text` and becomes what was written;
    /// VX_E_SOCKET_EFAULT for too little.
    ENUM_VX_E_SOCKET bindListAddressesDiagnosticStrA(char* text, std::uint32_t* length);
    ENUM_VX_E_SOCKET boundListAddressesDiagnosticStrA(char* text, std::uint32_t* length);

protected:
    TcpServerSocket2(int domain, int type, int protocol, ENUM_VX_E_SOCKET* status);

private:
    static constexpr unsigned int MOST_ENTRIES = 20;

    /// Up to 20 addresses.
    class AddressList {
    public:
        /// False, and the address is gone, where there is no room.
        bool add(std::unique_ptr<InetSocketAddress> address);
        void clear();
        unsigned int size() const { return m_size; }
        const InetSocketAddress* get(unsigned int index) const { return m_entries[index].get(); }

    private:
        std::array<std::unique_ptr<InetSocketAddress>, MOST_ENTRIES> m_entries;
        unsigned int m_size = 0;
    };

    ENUM_VX_E_SOCKET addHost(const char* host, const char* service, unsigned short port);
    /// How `bind` goes on behind an entry.
    enum class Next { ENTRY, END, FAILURE };
    ENUM_VX_E_SOCKET bindOne(const InetSocketAddress* entry, Next* next);
    ENUM_VX_E_SOCKET acceptConnection(unsigned int* handle, vx_sockaddr_union* peer);
    ENUM_VX_E_SOCKET accept_guts(TcpWorkerSocket2** out, unsigned int* socket);
    ENUM_VX_E_SOCKET shutDown(Direction direction);
    static ENUM_VX_E_SOCKET listAddressesDiagnosticStrA(const AddressList& list, char* text, std::uint32_t* length);

    const int m_domain; ///< kept, and each address has its own
    const int m_type;
    const int m_protocol;
    std::array<unsigned int, MOST_ENTRIES> m_sockets;
    unsigned int m_socketCount = 0;
    bool m_reusesAddress = false;
    AddressList m_bindList;
    AddressList m_boundList;
    std::unique_ptr<InetSocketAddress> m_saved;
};

} // namespace vx::net
