#pragma once

#include "Connection.h"

#include <vx/Object.h>
#include <vx/exec/IRunnable.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace vxlogd {

/// Some of the connections, served by one thread.
class Shard final : public vx::Object, public vx::exec::IRunnable {
public:
    static constexpr std::size_t MOST_CONNECTIONS = 62;

    Shard(Intake& intake, const Limits& limits);
    ~Shard() noexcept override;

    VX_OBJECT_UNKNOWN(vx::Object)

    /// The number of connections, including new ones that the thread has not taken over yet.
    std::size_t getSize() const { return m_size; }
    void add(std::unique_ptr<vx::net::TcpWorkerSocket2> socket);
    /// Makes the thread end when all received lines are in the log and answered, or after a time limit.
    void stop();

    // IRunnable
    void* run() override;

private:
    void takeOver();
    void wait();
    void serve(Connection& connection, bool isReadable, bool isWritable);
    void drop(std::size_t index);

    Intake& m_intake;
    const Limits& m_limits;
    const std::shared_ptr<Waker> m_waker;
    std::unique_ptr<vx::net::TcpWorkerSocket2> m_wakeSocket;
    std::vector<std::unique_ptr<Connection>> m_connections;
    std::mutex m_lock;
    std::vector<std::unique_ptr<vx::net::TcpWorkerSocket2>> m_new;
    std::atomic<std::size_t> m_size = 0;
    std::atomic<bool> m_isStopping = false;
};

} // namespace vxlogd
