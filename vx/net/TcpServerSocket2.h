#pragma once

#include "vx/net/InetSocketAddress.h"
#include "vx/net/TcpSocket2.h"

#include <array>
#include <memory>

namespace vx::net {

class TcpWorkerSocket2;

/// A server on up to 20 native sockets. The order of calls is: add addresses to the bind list, `bind`, `listen`,
/// `saveBoundAddresses`, `accept` repeatedly, `close`.
///
/// Each address gets its own socket. An IPv6 socket serves only IPv6, so that the wildcard addresses of both families
/// can use the same port.
///
/// @code
/// net::TcpServerSocket2* made = nullptr;
/// net::TcpServerSocket2::createTcpServerSocket2(AF_UNSPEC, SOCK_STREAM, 0, &made);
/// const std::unique_ptr<net::TcpServerSocket2> server(made);
/// server->bindListAddAddrAny(0); // the system chooses a port for IPv6 and one for IPv4
/// assert(server->bind() == VX_E_SOCKET_OK && server->listen(5) == VX_E_SOCKET_OK);
/// assert(server->saveBoundAddresses() == VX_E_SOCKET_OK);
/// vx_sockaddr_union address;
/// unsigned int length = sizeof address;
/// server->getBoundAddress(0, reinterpret_cast<signed char*>(&address), &length);
///
/// net::TcpClientSocket2* client = nullptr; // in another process, in general
/// net::TcpClientSocket2::createTcpClientSocket2(address.generic.sa_family, SOCK_STREAM, 0, &client);
/// assert(client->connect(&address, length) == VX_E_SOCKET_OK);
/// net::TcpWorkerSocket2* connection = nullptr;
/// assert(server->accept(&connection) == VX_E_SOCKET_OK);
/// delete connection; // closes it
/// delete client;
/// @endcode
class VX_API TcpServerSocket2 : public TcpSocket2 {
public:
    /// The arguments are stored for the native sockets. `bind` opens each of them in the family of its address. The
    /// caller deletes the object, with `destroyTcpSocket2` for example.
    static ENUM_VX_E_SOCKET createTcpServerSocket2(int domain, int type, int protocol, TcpServerSocket2** out);
    /// Shuts the output down and closes the socket, unless that was done before.
    ~TcpServerSocket2() override;

    // TcpSocket2
    /// The low 32 bits of the object's address, never 0: one number for all its sockets.
    unsigned int getId() override;
    ENUM_VX_E_SOCKET shutdownInput() override;
    ENUM_VX_E_SOCKET shutdownOutput() override;
    ENUM_VX_E_SOCKET shutdownBoth() override;
    ENUM_VX_E_SOCKET close() override;

    /// Adds the wildcard address of IPv6, then that of IPv4. VX_E_SOCKET_EFAULT if either could not be added.
    ENUM_VX_E_SOCKET bindListAddAddrAny(unsigned short port);
    /// Adds every address of the hosts in a list with commas; blanks after a comma are ignored. Port 0 means the port
    /// of `service`; otherwise `service` may be null. The result is that of the last host: VX_E_SOCKET_HOST_NOT_FOUND
    /// if no address of it was added. Wildcard addresses, and those for which there is no room, are left out.
    ENUM_VX_E_SOCKET bindListAddAddrInfo(const char* hosts, const char* service, unsigned short port);
    void bindListClear();
    void boundListClear();
    /// Drops the native sockets without closing them. The number of sockets does not change.
    void socketListClear();
    /// For a server that opens no socket and tells its clients one address in another way. Saves the address if there
    /// is exactly one, and empties the bind list. `saveBoundAddresses` then publishes it.
    ENUM_VX_E_SOCKET bindListSaveOneForNamedPipeReply();
    /// Whether `bind` may use a port on which connections of an earlier server are still closing. That server must have
    /// set this too. Without it, `bind` fails with VX_E_SOCKET_EADDRINUSE for about a minute after a restart. A port on
    /// which another socket listens cannot be used; to find out, `bind` itself begins to listen. Applies to later calls
    /// of `bind`; off by default.
    void setReuseAddress(bool reuses) { m_reusesAddress = reuses; }
    /// Opens and binds a socket for each entry of the bind list. Succeeds if at least one could be bound.
    ENUM_VX_E_SOCKET bind();
    /// A `backlog` below 1 means the system's maximum.
    ENUM_VX_E_SOCKET listen(int backlog);
    /// Appends the addresses of the sockets to the bound list, with the port that the system chose if port 0 was given.
    ENUM_VX_E_SOCKET saveBoundAddresses();
    /// Copies a bound address in the system's form. `*length` is the size of `address` and becomes the number of bytes
    /// copied.
    ENUM_VX_E_SOCKET getBoundAddress(std::uint32_t index, signed char* address, unsigned int* length);
    /// Waits without a limit for a connection on any of the sockets. The first ready socket in the list is used. If a
    /// connection has ended meanwhile, the call may succeed without a result.
    ENUM_VX_E_SOCKET accept(TcpWorkerSocket2** out);
    /// The connection as a native socket; all bits are 1 if there is none.
    ENUM_VX_E_SOCKET accept(unsigned int* socket);
    /// "[::]:9000; 0.0.0.0:9000" in the default encoding. `*length` is the size of `text` and becomes the number of
    /// bytes written. VX_E_SOCKET_EFAULT if it is too small.
    ENUM_VX_E_SOCKET bindListAddressesDiagnosticStrA(char* text, std::uint32_t* length);
    ENUM_VX_E_SOCKET boundListAddressesDiagnosticStrA(char* text, std::uint32_t* length);

protected:
    TcpServerSocket2(int domain, int type, int protocol, ENUM_VX_E_SOCKET* status);

private:
    static constexpr unsigned int MOST_ENTRIES = 20;

    /// Up to 20 addresses.
    class AddressList {
    public:
        /// Deletes the address and returns false if there is no room.
        bool add(std::unique_ptr<InetSocketAddress> address);
        void clear();
        unsigned int size() const { return m_size; }
        const InetSocketAddress* get(unsigned int index) const { return m_entries[index].get(); }

    private:
        std::array<std::unique_ptr<InetSocketAddress>, MOST_ENTRIES> m_entries;
        unsigned int m_size = 0;
    };

    ENUM_VX_E_SOCKET addHost(const char* host, const char* service, unsigned short port);
    /// How `bind` continues after an entry.
    enum class Next { ENTRY, END, FAILURE };
    ENUM_VX_E_SOCKET bindOne(const InetSocketAddress* entry, Next* next);
    ENUM_VX_E_SOCKET acceptConnection(unsigned int* handle, vx_sockaddr_union* peer);
    ENUM_VX_E_SOCKET accept_guts(TcpWorkerSocket2** out, unsigned int* socket);
    ENUM_VX_E_SOCKET shutDown(Direction direction);
    static ENUM_VX_E_SOCKET listAddressesDiagnosticStrA(const AddressList& list, char* text, std::uint32_t* length);

    const int m_domain; ///< only stored: each address has its own
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
