#include "Shard.h"

#include "Complaint.h"

#include <vx/Describe.h>

#include <algorithm>
#include <exception>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>

namespace vxlogd {

namespace {

using vx::net::SocketPoller;
using vx::net::TcpWorkerSocket2;

/// False, with a message, if the connection has to be dropped.
template <class Work>
bool succeeds(Work&& work)
{
    try {
        try {
            work();
            return true;
        } catch (const vx::Exception& failure) {
            complain("a connection is dropped: " + vx::explain(failure).toUtf8());
        } catch (const std::exception& failure) {
            complain(std::string("a connection is dropped: ") + failure.what());
        }
    } catch (const std::bad_alloc&) { // there is no memory for a message
    }
    return false;
}

} // namespace

Shard::Shard(Intake& intake, const Limits& limits)
    : m_intake(intake)
    , m_limits(limits)
    , m_waker(std::make_shared<Waker>())
    , m_events(256)
{
}

Shard::~Shard() noexcept = default;

void Shard::add(std::unique_ptr<TcpWorkerSocket2> socket)
{
    {
        const std::lock_guard lock(m_lock);
        m_new.push_back(std::move(socket));
        ++m_size;
    }
    wake();
}

void Shard::stop()
{
    m_isStopping = true;
    wake();
}

void* Shard::run()
{
    constexpr std::chrono::seconds PATIENCE(10); // with connections that neither send nor receive any more
    constexpr std::chrono::seconds ROUND(1); // between two looks for silent connections
    constexpr std::uint32_t MOMENT = 50;

    std::optional<Clock::time_point> stopped;
    Clock::time_point nextRound = Clock::now() + ROUND;
    for (;;) {
        if (m_isStopping && !stopped)
            stopped = Clock::now();
        takeOver();
        if (const Clock::time_point now = Clock::now(); stopped || now >= nextRound) {
            serveAll();
            nextRound = now + ROUND;
        }
        const auto isStuck = [&, now = Clock::now()](const auto& place) {
            return now - std::max(*stopped, place.second.connection->lastSign()) >= PATIENCE;
        };
        if (stopped && std::all_of(m_places.begin(), m_places.end(), isStuck)) {
            while (!m_places.empty())
                drop(m_places.begin());
            return nullptr;
        }
        waitAndServe(stopped ? MOMENT : m_places.empty() ? VX_WAIT_FOREVER : 1000);
    }
}

void Shard::takeOver()
{
    std::vector<std::unique_ptr<TcpWorkerSocket2>> taken;
    {
        const std::lock_guard lock(m_lock);
        taken.swap(m_new);
    }
    for (std::unique_ptr<TcpWorkerSocket2>& socket : taken) {
        const std::uint64_t number = ++m_lastNumber;
        if (succeeds([&] {
                auto connection = std::make_unique<Connection>(std::move(socket), m_intake, m_limits, m_waker, number);
                m_places.emplace(number, Place {std::move(connection)});
            }))
            serve(number, 0);
        else
            --m_size;
    }
}

void Shard::waitAndServe(std::uint32_t milliseconds)
{
    std::size_t count = 0;
    m_waker->getPoller().wait(m_events, milliseconds, &count);
    const Waker::News news = m_waker->take();
    if (news.isForAll)
        serveAll();
    for (const std::uint64_t number : news.connections)
        serve(number, 0);
    for (std::size_t index = 0; index < count; ++index)
        serve(m_events[index].id, m_events[index].ready);
}

/// Reads at most one block, so that a client that floods gets its turn as the others do.
void Shard::serve(std::uint64_t number, std::uint32_t ready)
{
    const auto found = m_places.find(number);
    if (found == m_places.end())
        return;
    Connection& connection = *found->second.connection;
    const auto turn = [&](bool isReadable, bool isWritable) {
        if (isWritable && connection.wantsToWrite())
            connection.write();
        if (m_isStopping || connection.isFinishing())
            connection.finish();
        else if (isReadable && connection.wantsToRead())
            connection.read();
        connection.goOn();
        connection.endIfSilent(Clock::now());
    };
    const bool lives = succeeds([&] {
        const bool wasFinishing = connection.isFinishing();
        turn((ready & (SocketPoller::READ | SocketPoller::FAILED)) != 0,
            (ready & (SocketPoller::WRITE | SocketPoller::FAILED)) != 0);
        if (!wasFinishing && connection.isFinishing())
            turn(false, false);
        watch(number, found->second,
            (connection.wantsToRead() ? SocketPoller::READ : 0)
                | (connection.wantsToWrite() ? SocketPoller::WRITE : 0));
    });
    if (!lives || connection.isOver())
        drop(found);
}

void Shard::serveAll()
{
    std::vector<std::uint64_t> numbers;
    numbers.reserve(m_places.size());
    for (const auto& [number, place] : m_places)
        numbers.push_back(number);
    for (const std::uint64_t number : numbers)
        serve(number, 0);
}

/// The poller always reports a socket that has failed. So it must not know one that is not to be read now.
void Shard::watch(std::uint64_t number, Place& place, std::uint32_t interest)
{
    if (place.interest == interest)
        return;
    SocketPoller& poller = m_waker->getPoller();
    const unsigned int socket = place.connection->getSocket()->getId();
    const ENUM_VX_E_SOCKET result = place.interest == 0 ? poller.add(socket, interest, number)
        : interest == 0                                 ? poller.remove(socket)
                                                        : poller.change(socket, interest, number);
    if (result != VX_E_SOCKET_OK)
        throw std::runtime_error(vx::String(VXGetDescriptionFromVX_E_SOCKET(result)).toUtf8());
    place.interest = interest;
}

void Shard::drop(Places::iterator found)
{
    if (found->second.interest != 0)
        m_waker->getPoller().remove(found->second.connection->getSocket()->getId());
    m_places.erase(found);
    --m_size;
}

} // namespace vxlogd
