#include "Delivery.h"

#include "Ending.h"
#include "Texts.h"
#include "common/Failure.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <utility>

namespace vxlog {

using namespace std::chrono_literals;
using vxtools::Failure;
using vxtools::Text;

Delivery::Delivery(const Destination& destination, bool keeps, Backlog& backlog, Teller& teller)
    : m_destination(destination)
    , m_keeps(keeps)
    , m_name(nameOf(destination))
    , m_backlog(backlog)
    , m_teller(teller)
    , m_firstOfRun(backlog.range().first)
    , m_next(m_firstOfRun)
{
}

void Delivery::start()
{
    m_thread = std::thread([this] {
        try {
            run();
        } catch (...) {
            m_failure = std::current_exception();
            m_hasFailed = true;
        }
        disconnect();
        m_isAway = true;
        m_room.set();
    });
}

void Delivery::stop() noexcept
{
    m_isStopping = true;
    wake();
    if (m_thread.joinable())
        m_thread.join();
}

void Delivery::waitForRoom()
{
    pollfd room {m_room.descriptor(), POLLIN, 0};
    while (::poll(&room, 1, -1) < 0 && errno == EINTR)
        ;
    m_room.clear();
    check();
}

void Delivery::check() const
{
    if (m_hasFailed)
        std::rethrow_exception(m_failure);
}

void Delivery::finish()
{
    m_isEnding = true;
    wake();
    m_thread.join();
    check();
}

Delivery::Clock::time_point Delivery::patienceEnd()
{
    constexpr auto TIME_AFTER_SIGNAL = 10s; // for what has been read
    constexpr auto TIME_FOR_ANSWERS = 5s; // at least, at the end of the input
    const Clock::time_point now = Clock::now();
    if (m_isEnding && !m_endingSince)
        m_endingSince = now;
    if (endingWasAskedFor() && !m_signalSince)
        m_signalSince = now;
    Clock::time_point end = m_signalSince ? *m_signalSince + TIME_AFTER_SIGNAL : NEVER;
    if (m_awaySince && !m_keeps) {
        if (isAllDone())
            m_awaySince = now; // nothing can be lost
        else
            end = std::min(end, *m_awaySince + m_destination.retry);
    }
    if (m_endingSince)
        end = std::min(end, std::max(*m_endingSince, m_lastProgress) + std::max(m_destination.retry, TIME_FOR_ANSWERS));
    return end;
}

bool Delivery::readBacklog(std::string& target, std::size_t most)
{
    constexpr auto PAUSE = 1s;
    try {
        m_next += m_backlog.read(m_next, target, most);
        m_readAgain = NEVER;
        m_isReadingTold = false;
        return true;
    } catch (const Failure& failure) {
        if (m_isEnding)
            throw;
        target.clear();
        m_readAgain = Clock::now() + PAUSE;
        if (!std::exchange(m_isReadingTold, true))
            m_teller.tell(TRYING_AGAIN(m_name, failure.text()));
        return false;
    }
}

bool Delivery::isAllDone() const
{
    const Backlog::Range range = m_backlog.range();
    return range.first == range.end;
}

void Delivery::giveUp(const Text& why) const
{
    const std::uint64_t all = m_backlog.range().end - m_firstOfRun;
    if (all == 0 || !m_destination.wantsAnswers)
        throw Failure(m_name, why);
    throw Failure(m_name, NOT_ACKNOWLEDGED(why, m_backlog.range().first - m_firstOfRun, all));
}

} // namespace vxlog
