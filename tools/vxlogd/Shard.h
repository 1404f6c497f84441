#pragma once

#include "Connection.h"

#include <vx/Object.h>
#include <vx/exec/IRunnable.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace vxlogd {

/// Some of the connections, served by one thread.
class Shard final : public vx::Object, public vx::exec::IRunnable {
public:
    Shard(Intake& intake, const Limits& limits);
    ~Shard() noexcept override;

    VX_OBJECT_UNKNOWN(vx::Object)

    /// The number of connections, including new ones that the thread has not taken over yet.
    std::size_t getSize() const { return m_size; }
    void add(std::unique_ptr<vx::net::TcpWorkerSocket2> socket);
    /// Makes the thread end when all received lines are in the log and answered, or after a time limit.
    void stop();
    /// Something has changed that concerns all connections.
    void wake() { m_waker->wakeForAll(); }

    // IRunnable
    void* run() override;

private:
    struct Place {
        std::unique_ptr<Connection> connection;
        std::uint32_t interest = 0; ///< what the poller waits for; 0 if it does not know the socket
    };
    using Places = std::unordered_map<std::uint64_t, Place>;

    void takeOver();
    void waitAndServe(std::uint32_t milliseconds);
    void serve(std::uint64_t number, std::uint32_t ready);
    void serveAll();
    void watch(std::uint64_t number, Place& place, std::uint32_t interest);
    void drop(Places::iterator found);

    Intake& m_intake;
    const Limits& m_limits;
    const std::shared_ptr<Waker> m_waker;
    Places m_places;
    std::uint64_t m_lastNumber = 0;
    std::vector<vx::net::SocketPoller::Event> m_events;
    std::mutex m_lock;
    std::vector<std::unique_ptr<vx::net::TcpWorkerSocket2>> m_new;
    std::atomic<std::size_t> m_size = 0;
    std::atomic<bool> m_isStopping = false;
};

} // namespace vxlogd
