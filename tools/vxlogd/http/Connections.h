#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <httplib.h>
#include <mutex>
#include <string>

namespace vxlogd::http {

/// Serves each connection in a separate thread, and closes at once those that are too many.
class Connections final : public httplib::TaskQueue {
public:
    explicit Connections(std::size_t most)
        : m_most(most)
    {
    }

    /// Whether the connection that the calling thread serves is to be refused.
    static bool isRefused() { return s_isRefused; }

    // TaskQueue
    void enqueue(std::function<void()> serve) override;
    /// Returns when all threads have ended.
    void shutdown() override;

private:
    bool start(const std::function<void()>& serve);

    static thread_local bool s_isRefused;
    const std::size_t m_most;
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::size_t m_count = 0;
};

/// The bytes of one connection for one request. The head of the request is read before the library parses it, and has
/// limits in time and size; each write has a limit in time.
class Exchange final : public httplib::Stream {
public:
    enum class Head { COMPLETE, TOO_LARGE, NONE };

    /// Waits end when `stop` becomes readable. Neither descriptor is owned.
    Exchange(int socket, int stop);

    Head readHead();
    void sendQuietly(const std::string& text);
    /// Whether the client has gone, or the server stops.
    bool isOver() const;

    // Stream
    using Stream::write;
    bool is_readable() const override { return m_position < m_head.size(); }
    bool is_writable() const override { return !isOver(); }
    ssize_t read(char* bytes, std::size_t size) override;
    ssize_t write(const char* bytes, std::size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return m_socket; }

private:
    using Clock = std::chrono::steady_clock;

    bool waitFor(short event, Clock::time_point end) const;

    const int m_socket;
    const int m_stop;
    std::string m_head;
    std::size_t m_position = 0;
};

} // namespace vxlogd::http
