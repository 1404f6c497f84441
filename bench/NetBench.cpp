// Sockets of both generations beside the plain ones of the system over loopback: echo of 64 bytes, bulk, connect and accept,
// waits; and URIs beside POCO, where it is installed.
#include "vx/io/InputStream.h"
#include "vx/io/OutputStream.h"
#include "vx/net/SocketPoller.h"
#include "vx/net/TcpClientSocket2.h"
#include "vx/net/TcpServerSocket.h"
#include "vx/net/TcpServerSocket2.h"
#include "vx/net/TcpSocket.h"
#include "vx/net/URI.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <netinet/tcp.h>
#include <poll.h>
#include <string>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

#ifdef VX_BENCH_POCO
#include <Poco/URI.h>
#endif

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

sockaddr_in loopback(unsigned short port)
{
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

void sendSmallAtOnce(int socket)
{
    constexpr int ON = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &ON, sizeof ON);
}

/// The system's own sockets: the floor.
class Plain {
public:
    class Connection {
    public:
        explicit Connection(int socket)
            : m_socket(socket)
        {
            require(socket != -1);
        }
        explicit Connection(unsigned short port)
            : m_socket(::socket(AF_INET, SOCK_STREAM, 0))
        {
            const sockaddr_in address = loopback(port);
            require(::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0);
        }
        ~Connection() { ::close(m_socket); }
        int number() const { return m_socket; }
        int read(char* target, int length)
        {
            return static_cast<int>(::recv(m_socket, target, static_cast<std::size_t>(length), 0));
        }
        int write(const char* source, int length)
        {
            return static_cast<int>(::send(m_socket, source, static_cast<std::size_t>(length), MSG_NOSIGNAL));
        }

    private:
        int m_socket;
    };
    class Listener {
    public:
        Listener()
            : m_socket(::socket(AF_INET, SOCK_STREAM, 0))
        {
            sockaddr_in address = loopback(0);
            socklen_t length = sizeof address;
            require(
                ::bind(m_socket, reinterpret_cast<sockaddr*>(&address), length) == 0 && ::listen(m_socket, 64) == 0);
            require(::getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &length) == 0);
            m_port = ntohs(address.sin_port);
        }
        ~Listener() { ::close(m_socket); }
        unsigned short port() const { return m_port; }
        std::unique_ptr<Connection> accept()
        {
            return std::make_unique<Connection>(::accept(m_socket, nullptr, nullptr));
        }

    private:
        int m_socket;
        unsigned short m_port;
    };
};

/// The generation of result codes.
class Results {
public:
    class Connection {
    public:
        explicit Connection(std::unique_ptr<vx::net::TcpWorkerSocket2> socket)
            : m_socket(std::move(socket))
        {
        }
        explicit Connection(unsigned short port)
        {
            vx::net::TcpClientSocket2* socket = nullptr;
            require(vx::net::TcpClientSocket2::createTcpClientSocket2(AF_INET, SOCK_STREAM, 0, &socket) == 0);
            m_socket.reset(socket);
            vx_sockaddr_union address {};
            address.in4 = loopback(port);
            require(socket->connect(&address, sizeof address.in4) == VX_E_SOCKET_OK);
        }
        int number() const { return static_cast<int>(m_socket->getId()); }
        int read(char* target, int length)
        {
            std::int32_t count = 0;
            m_socket->recv(target, static_cast<unsigned int>(length), 0, &count);
            return count;
        }
        int write(const char* source, int length)
        {
            std::int32_t count = 0;
            m_socket->send(source, static_cast<unsigned int>(length), 0, &count);
            return count;
        }

    private:
        std::unique_ptr<vx::net::TcpWorkerSocket2> m_socket;
    };
    class Listener {
    public:
        Listener()
        {
            vx::net::TcpServerSocket2* socket = nullptr;
            require(vx::net::TcpServerSocket2::createTcpServerSocket2(AF_INET, SOCK_STREAM, 0, &socket) == 0);
            m_socket.reset(socket);
            const Plain::Listener free; // names a port
            m_port = free.port();
        }
        unsigned short port()
        {
            require(m_socket->bindListAddAddrInfo("127.0.0.1", nullptr, m_port) == VX_E_SOCKET_OK);
            require(m_socket->bind() == VX_E_SOCKET_OK && m_socket->listen(64) == VX_E_SOCKET_OK);
            return m_port;
        }
        std::unique_ptr<Connection> accept()
        {
            vx::net::TcpWorkerSocket2* socket = nullptr;
            require(m_socket->accept(&socket) == VX_E_SOCKET_OK && socket != nullptr);
            return std::make_unique<Connection>(std::unique_ptr<vx::net::TcpWorkerSocket2>(socket));
        }

    private:
        std::unique_ptr<vx::net::TcpServerSocket2> m_socket;
        unsigned short m_port;
    };
};

/// The generation of streams.
class Streams {
public:
    class Connection {
    public:
        explicit Connection(vx::Reference<vx::net::TcpSocket> socket)
            : m_socket(std::move(socket))
            , m_input(m_socket->getInputStream())
            , m_output(m_socket->getOutputStream())
        {
        }
        explicit Connection(unsigned short port)
            : Connection(vx::Reference<vx::net::TcpSocket>(new vx::net::TcpSocket(u"127.0.0.1", port)))
        {
        }
        int number() const
        {
            const std::string id = m_socket->getInheritanceId().toUtf8();
            return std::atoi(id.c_str() + id.find('=') + 1);
        }
        int read(char* target, int length) { return m_input->read(reinterpret_cast<signed char*>(target), length); }
        int write(const char* source, int length)
        {
            m_output->write(reinterpret_cast<const signed char*>(source), length);
            return length;
        }

    private:
        vx::Reference<vx::net::TcpSocket> m_socket;
        vx::Reference<vx::io::InputStream> m_input;
        vx::Reference<vx::io::OutputStream> m_output;
    };
    class Listener {
    public:
        unsigned short port() const { return m_socket.getPort(); }
        std::unique_ptr<Connection> accept() { return std::make_unique<Connection>(m_socket.accept()); }

    private:
        vx::net::TcpServerSocket m_socket {0, 64};
    };
};

template <class Connection>
bool readAll(Connection& connection, char* target, int length)
{
    for (int done = 0; done < length;) {
        const int count = connection.read(target + done, length - done);
        if (count < 1)
            return false;
        done += count;
    }
    return true;
}

template <class Connection>
void writeAll(Connection& connection, const char* source, int length)
{
    for (int done = 0; done < length;) {
        const int count = connection.write(source + done, length - done);
        require(count > 0);
        done += count;
    }
}

template <class Sockets>
void echo(benchmark::State& state)
{
    constexpr int LENGTH = 64;
    typename Sockets::Listener listener;
    const unsigned short port = listener.port();
    std::thread server([&] {
        const auto connection = listener.accept();
        sendSmallAtOnce(connection->number());
        for (char text[LENGTH]; readAll(*connection, text, LENGTH);)
            writeAll(*connection, text, LENGTH);
    });
    {
        typename Sockets::Connection connection(port);
        sendSmallAtOnce(connection.number());
        char sent[LENGTH] = "64 bytes";
        char heard[LENGTH] = "";
        for (auto _ : state) {
            writeAll(connection, sent, LENGTH);
            if (!readAll(connection, heard, LENGTH) || std::memcmp(sent, heard, LENGTH) != 0)
                state.SkipWithError("another text came back");
            ++sent[LENGTH - 1];
        }
    }
    server.join();
}

template <class Sockets>
void bulk(benchmark::State& state)
{
    constexpr int BLOCK = 64 * 1024;
    constexpr int BLOCKS = 64;
    typename Sockets::Listener listener;
    const unsigned short port = listener.port();
    std::thread server([&] {
        const auto connection = listener.accept();
        sendSmallAtOnce(connection->number());
        std::vector<char> block(BLOCK);
        for (int count = 0; readAll(*connection, block.data(), BLOCK);) {
            if (++count % BLOCKS == 0)
                writeAll(*connection, "k", 1);
        }
    });
    {
        typename Sockets::Connection connection(port);
        sendSmallAtOnce(connection.number());
        const std::vector<char> block(BLOCK, 'x');
        char answer = 0;
        for (auto _ : state) {
            for (int count = 0; count < BLOCKS; ++count)
                writeAll(connection, block.data(), BLOCK);
            if (!readAll(connection, &answer, 1))
                state.SkipWithError("no answer");
        }
        state.SetBytesProcessed(state.iterations() * BLOCK * BLOCKS);
    }
    server.join();
}

enum Measure { BEGIN, WHOLE };

/// The time until both sides stand, or until both are closed again. At the end the plain sockets do less than those with
/// results, which shut their output down before they close.
template <class Sockets>
void connectAndAccept(benchmark::State& state)
{
    using Clock = std::chrono::steady_clock;
    typename Sockets::Listener listener;
    const unsigned short port = listener.port();
    for (auto _ : state) {
        const auto start = Clock::now();
        Clock::time_point begun;
        {
            typename Sockets::Connection client(port);
            const auto accepted = listener.accept();
            begun = Clock::now();
        }
        const std::chrono::duration<double> time = (state.range(0) == BEGIN ? begun : Clock::now()) - start;
        state.SetIterationTime(time.count());
    }
}

void bothMeasures(benchmark::internal::Benchmark* benchmark)
{
    benchmark->ArgName("whole")->Arg(BEGIN)->Arg(WHOLE)->UseManualTime()->Iterations(2000);
}

BENCHMARK_TEMPLATE(echo, Plain)->UseRealTime();
BENCHMARK_TEMPLATE(echo, Results)->UseRealTime();
BENCHMARK_TEMPLATE(echo, Streams)->UseRealTime();
BENCHMARK_TEMPLATE(bulk, Plain)->UseRealTime();
BENCHMARK_TEMPLATE(bulk, Results)->UseRealTime();
BENCHMARK_TEMPLATE(bulk, Streams)->UseRealTime();
BENCHMARK_TEMPLATE(connectAndAccept, Plain)->Apply(bothMeasures);
BENCHMARK_TEMPLATE(connectAndAccept, Results)->Apply(bothMeasures);
BENCHMARK_TEMPLATE(connectAndAccept, Streams)->Apply(bothMeasures);

/// Connected pairs of sockets, of which the last one can be read from.
class Crowd {
public:
    explicit Crowd(std::int64_t count)
    {
        for (std::int64_t index = 0; index < count; ++index) {
            int ends[2];
            require(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0);
            m_sockets.push_back(ends[0]);
            m_peers.push_back(ends[1]);
        }
        require(::send(m_peers.back(), "x", 1, 0) == 1);
    }
    ~Crowd()
    {
        for (const std::vector<int>* sockets : {&m_sockets, &m_peers})
            std::for_each(sockets->begin(), sockets->end(), ::close);
    }
    Crowd(const Crowd&) = delete;
    Crowd& operator=(const Crowd&) = delete;
    const std::vector<int>& sockets() const { return m_sockets; }

private:
    std::vector<int> m_sockets;
    std::vector<int> m_peers;
};

void waitByPoll(benchmark::State& state)
{
    const Crowd crowd(state.range(0));
    std::vector<pollfd> entries;
    for (const int socket : crowd.sockets())
        entries.push_back({socket, POLLIN, 0});
    for (auto _ : state) {
        if (::poll(entries.data(), entries.size(), -1) != 1 || entries.back().revents != POLLIN)
            state.SkipWithError("another socket");
    }
}

void waitBySelect(benchmark::State& state)
{
    const Crowd crowd(state.range(0));
    std::vector<std::unique_ptr<vx::net::TcpWorkerSocket2>> owners;
    std::vector<vx::net::TcpWorkerSocket2*> all;
    for (const int socket : crowd.sockets()) {
        ENUM_VX_E_SOCKET status = VX_E_SOCKET_OK;
        const int copy = ::dup(socket); // the owner closes it
        owners.push_back(std::make_unique<vx::net::TcpWorkerSocket2>(static_cast<unsigned int>(copy), &status));
        all.push_back(owners.back().get());
    }
    for (auto _ : state) {
        std::vector<vx::net::TcpWorkerSocket2*> read = all;
        auto count = static_cast<std::uint32_t>(read.size());
        std::uint32_t none = 0;
        std::int32_t ready = 0;
        vx::net::TcpWorkerSocket2::select(read.data(), &count, nullptr, &none, nullptr, &none, nullptr, &ready);
        if (ready != 1 || read.back() == nullptr)
            state.SkipWithError("another socket");
    }
}

void waitByEpoll(benchmark::State& state)
{
    const Crowd crowd(state.range(0));
    const int epoll = ::epoll_create1(0);
    for (const int socket : crowd.sockets()) {
        epoll_event event {};
        event.events = EPOLLIN;
        event.data.fd = socket;
        require(::epoll_ctl(epoll, EPOLL_CTL_ADD, socket, &event) == 0);
    }
    epoll_event events[64];
    for (auto _ : state) {
        if (::epoll_wait(epoll, events, 64, -1) != 1 || events[0].data.fd != crowd.sockets().back())
            state.SkipWithError("another socket");
    }
    ::close(epoll);
}

void waitByPoller(benchmark::State& state)
{
    const Crowd crowd(state.range(0));
    vx::net::SocketPoller poller(nullptr);
    for (const int socket : crowd.sockets()) {
        const auto id = static_cast<unsigned int>(socket);
        require(poller.add(id, vx::net::SocketPoller::READ, id) == VX_E_SOCKET_OK);
    }
    vx::net::SocketPoller::Event events[64];
    for (auto _ : state) {
        std::size_t count = 0;
        poller.wait(events, 0xFFFFFFFF, &count);
        if (count != 1 || static_cast<int>(events[0].id) != crowd.sockets().back())
            state.SkipWithError("another socket");
    }
}

BENCHMARK(waitByPoll)->Arg(60)->Arg(960);
BENCHMARK(waitBySelect)->Arg(60);
BENCHMARK(waitByEpoll)->Arg(60)->Arg(960);
BENCHMARK(waitByPoller)->Arg(60)->Arg(960);

constexpr int URIS = 100'000;

std::string uriText(int number)
{
    const std::string text = std::to_string(number);
    return "http://user" + text + "@host" + text + ".example:8080/folder/" + text + "/page?id=" + text + "&sort=name";
}

/// Handles many URIs by `isRight`, which returns false for a wrong result.
template <class Text, class IsRight>
void measureUris(benchmark::State& state, IsRight isRight)
{
    std::vector<Text> texts;
    for (int number = 0; number < URIS; ++number)
        texts.emplace_back(uriText(number));
    for (auto _ : state) {
        for (const Text& text : texts) {
            if (!isRight(text))
                state.SkipWithError("another result");
        }
    }
    state.SetItemsProcessed(state.iterations() * URIS);
}

void parseAndPrintUris(benchmark::State& state)
{
    measureUris<vx::String>(
        state, [](const vx::String& text) { return vx::net::URI(text).toString().getLength() == text.getLength(); });
}
BENCHMARK(parseAndPrintUris)->Unit(benchmark::kMillisecond);

void parseAndAskUris(benchmark::State& state)
{
    const vx::String key(u"sort");
    measureUris<vx::String>(
        state, [&](const vx::String& text) { return vx::net::URI(text).getQueryValue(key, true) == u"name"; });
}
BENCHMARK(parseAndAskUris)->Unit(benchmark::kMillisecond);

#ifdef VX_BENCH_POCO

void parseAndPrintUrisPoco(benchmark::State& state)
{
    measureUris<std::string>(
        state, [](const std::string& text) { return Poco::URI(text).toString().size() == text.size(); });
}
BENCHMARK(parseAndPrintUrisPoco)->Unit(benchmark::kMillisecond);

void parseAndAskUrisPoco(benchmark::State& state)
{
    measureUris<std::string>(state, [](const std::string& text) {
        const auto parameters = Poco::URI(text).getQueryParameters();
        const auto found
            = std::find_if(parameters.begin(), parameters.end(), [](const auto& pair) { return pair.first == "sort"; });
        return found != parameters.end() && found->second == "name";
    });
}
BENCHMARK(parseAndAskUrisPoco)->Unit(benchmark::kMillisecond);

#endif

} // namespace
