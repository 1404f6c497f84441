#pragma once

#include "Connection.h"
#include "Log.h"
#include "Settings.h"
#include "Status.h"

#include <vx/Reference.h>
#include <vx/exec/Thread.h>
#include <vx/net/TcpServerSocket2.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace vxlogd {

class Acceptor;
class Shard;

/// A socket that listens where the settings say. Looks up names, which may take long. Throws std::runtime_error.
std::unique_ptr<vx::net::TcpServerSocket2> listenAt(const Settings& settings);

/// The certificates and keys of the settings; null without encryption. Throws vxtools::Failure that names the file.
std::shared_ptr<const vxtools::TlsContext> openTls(const Settings& settings);

/// Serves the connections on a few threads, as many as the machine runs at once.
class Server {
public:
    /// Accepts connections from `socket`. Throws as the constructor of LogFile does.
    Server(const Settings& settings, std::unique_ptr<vx::net::TcpServerSocket2> socket);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// "[::1]:7514; 127.0.0.1:7514".
    std::string getAddresses();
    void start();
    /// Applies the settings that may change while the server runs. Throws what the constructor of LogFile throws; the
    /// old settings stay in effect then.
    void change(const Settings& settings);
    /// Returns when all that was received is in the log, or cannot be written to it. Returns how many lines are lost.
    std::uint64_t stop();
    /// May be called from any thread.
    Counts getCounts() const;
    Tail& getTail() { return m_log->getTail(); }
    Clients& getClients() { return m_intake.getClients(); }
    Undelivered& getUndelivered() { return m_log->getUndelivered(); }

private:
    friend class Acceptor;

    void setLimits(const Settings& settings);
    void acceptAll();
    void wakeAll();
    void serve(std::unique_ptr<vx::net::TcpWorkerSocket2> socket);

    const vx::Reference<LogFile> m_log;
    Intake m_intake;
    Limits m_limits {};
    const std::unique_ptr<vx::net::TcpServerSocket2> m_socket;
    vx::Reference<Acceptor> m_acceptor;
    std::unique_ptr<vx::exec::Thread> m_acceptorThread;
    struct Service {
        vx::Reference<Shard> shard;
        std::unique_ptr<vx::exec::Thread> thread;
    };
    mutable std::mutex m_servicesLock;
    std::vector<Service> m_services; ///< changed by the acceptor only, under the lock
    std::atomic<std::uint64_t> m_accepted = 0;
    std::atomic<std::uint64_t> m_turnedAway = 0;
    bool m_isTurningAway = false; ///< used by the acceptor only
    std::atomic<bool> m_isStopping = false;
};

} // namespace vxlogd
