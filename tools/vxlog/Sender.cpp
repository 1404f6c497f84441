#include "Sender.h"

#include "Ending.h"
#include "Texts.h"
#include "common/Failure.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <iterator>
#include <poll.h>
#include <utility>

namespace vxlog {

using namespace std::chrono_literals;
using vxtools::Failure;
using vxtools::Text;

namespace {

constexpr std::size_t BLOCK_SIZE = 64 * 1024;
constexpr auto CONNECT_TIME = 30s;
constexpr auto FIRST_PAUSE = 100ms;
constexpr auto LONGEST_PAUSE = 10'000ms;

int millisecondsUntil(std::chrono::steady_clock::time_point time)
{
    if (time == time.max())
        return -1;
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(time - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(rest.count(), 0, 3'600'000));
}

} // namespace

Sender::Sender(const Destination& destination, const Policy& policy, Backlog& backlog, Teller& teller)
    : Delivery(destination, policy.keeps, backlog, teller)
    , m_policy(policy)
    , m_tls(destination.isEncrypted ? std::optional(vxtools::TlsContext::forClient(destination.tls, destination.host))
                                    : std::nullopt)
{
}

Sender::~Sender()
{
    stop();
}

void Sender::disconnect() noexcept
{
    m_link.reset();
}

void Sender::connect()
{
    const auto wait = [](int descriptor, short events) {
        pollfd one {descriptor, events, 0};
        return ::poll(&one, 1, static_cast<int>(CONNECT_TIME / 1ms)) > 0;
    };
    if (!openLink(wait))
        throw Failure(m_name, m_reason);
}

void Sender::run()
{
    const auto wait = [this](int descriptor, short events) {
        const Clock::time_point until = Clock::now() + CONNECT_TIME;
        while (!m_isStopping && Clock::now() < until) {
            if (waitFor(descriptor, events, until))
                return true;
        }
        return false;
    };
    for (bool isDone = false; !isDone && !m_isStopping;) {
        if (m_link != nullptr || openLink(wait)) {
            isDone = serve();
            m_link.reset();
        }
        if (!isDone && !m_isStopping) {
            lose();
            isDone = m_isEnding && isAllDone();
            if (!isDone)
                pause();
        }
    }
    if (m_mayHaveLost && !m_isStopping)
        giveUp(LOST_ON_THE_WAY());
}

bool Sender::openLink(const Link::Wait& wait)
{
    m_reason.clear();
    m_link = Link::open(m_destination, m_tls ? &*m_tls : nullptr, wait, m_reason);
    if (m_link == nullptr && m_reason.empty())
        m_reason = vxtools::textOfError(ETIMEDOUT);
    return m_link != nullptr;
}

/// True when all is done, false if the connection is lost.
bool Sender::serve()
{
    greet();
    for (;;) {
        m_wake.clear();
        const bool isEnding = m_isEnding; // before the look at the backlog
        if (!sendAll() || !hearAll())
            return m_hasEndedOutput && m_reason.empty();
        if (m_isStopping)
            return true;
        Clock::time_point until = NEVER;
        if (m_rest.empty()) {
            if (isEnding && isAllDone()) {
                if (m_destination.wantsAnswers)
                    return true;
                if (!std::exchange(m_hasEndedOutput, true))
                    m_link->endOutput(); // a server that cannot log the lines still says so
            } else if (beats()) {
                until = m_lastSent + m_destination.beat;
            }
            if (Clock::now() >= until) {
                m_output = "\x16\n";
                m_rest = m_output;
                continue;
            }
        }
        const int reads = m_link->wantsToRead() ? POLLIN : 0;
        const int writes = m_link->wantsToWrite(!m_rest.empty()) ? POLLOUT : 0;
        waitFor(m_link->descriptor(), static_cast<short>(reads | writes), std::min(until, m_readAgain));
    }
}

void Sender::greet()
{
    m_begin = m_next = m_backlog.range().first;
    m_isHeard = false;
    m_hasEndedOutput = false;
    m_heard.clear();
    m_output = "VXLOG level=" + std::to_string(m_policy.level) + " ack=" + (m_destination.wantsAnswers ? "1" : "0");
    if (m_policy.hasLevels)
        m_output += " prefix=1";
    if (beats())
        m_output += " beat=1";
    if (m_destination.wantsAnswers && !m_isOldServer)
        m_output += " client=" + m_backlog.id() + " seq=" + std::to_string(m_begin);
    m_output += '\n';
    m_rest = m_output;
    if (!m_destination.wantsAnswers)
        advance();
}

bool Sender::beats() const
{
    return m_destination.beat > 0s && !m_isOldServer;
}

/// False if the connection is lost.
bool Sender::sendAll()
{
    for (;;) {
        if (m_rest.empty()) {
            acknowledge(m_destination.wantsAnswers ? m_acknowledged : m_next - 1);
            m_output.clear();
            if (!readBacklog(m_output, BLOCK_SIZE))
                return true;
            m_rest = m_output;
            if (m_rest.empty() && !m_link->wantsToWrite(false))
                return true;
        }
        switch (m_link->send(m_rest)) {
        case Link::Result::DONE:
            m_lastSent = Clock::now();
            if (m_rest.empty() && m_output.empty())
                return true;
            break;
        case Link::Result::LATER:
            return true;
        case Link::Result::CLOSED:
        case Link::Result::BROKEN:
            m_reason.clear();
            hearAll(); // the server may have given a better reason
            if (m_reason.empty())
                m_reason = m_link->reason();
            return false;
        }
    }
}

/// False if the connection is lost.
bool Sender::hearAll()
{
    for (;;) {
        const Link::Result result = m_link->receive(m_heard);
        std::size_t begin = 0;
        for (std::size_t end; (end = m_heard.find('\n', begin)) != m_heard.npos; begin = end + 1)
            hear(std::string_view(m_heard).substr(begin, end - begin));
        m_heard.erase(0, begin);
        if (m_heard.size() > BLOCK_SIZE)
            m_heard.clear(); // no answer is so long
        if (result == Link::Result::LATER)
            return true;
        if (result != Link::Result::DONE) {
            if (m_reason.empty())
                m_reason = m_link->reason();
            return false;
        }
    }
}

void Sender::hear(std::string_view answer)
{
    constexpr std::string_view ACK = "ack ", ERROR = "err ", WAIT = "wait ";
    if (answer.starts_with(ACK) && m_destination.wantsAnswers) {
        const char* const end = answer.data() + answer.size();
        std::uint64_t last = 0;
        const auto [stop, error] = std::from_chars(answer.data() + ACK.size(), end, last);
        if (error != std::errc() || stop != end)
            return;
        // A server that does not know clients counts from 1 on each connection.
        m_isOldServer = m_isOldServer || last + 1 < m_begin;
        last += m_isOldServer ? m_begin - 1 : 0;
        if (last >= m_backlog.range().end)
            giveUp(KNOWS_MORE());
        m_isHeard = true;
        m_isAway = false;
        advance();
        acknowledge(last);
    } else if (answer.starts_with(WAIT)) {
        m_reason = answer.substr(WAIT.size());
        m_isAway = true;
        m_room.set();
        tellLoss();
    } else if (answer.starts_with(ERROR)) {
        m_reason = answer.substr(ERROR.size());
        m_isRefused = m_reason.starts_with("the greeting has") && !m_isHeard && !m_isOldServer;
        if (m_isRefused && m_policy.hasLevels)
            giveUp(NO_LEVELS());
        if (!m_isRefused && !m_keeps)
            giveUp(m_reason);
    }
}

void Sender::acknowledge(std::uint64_t last)
{
    m_acknowledged = std::max(m_acknowledged, last);
    last = std::min(m_acknowledged, m_next - 1); // the rest has to be read, because the server counts what it receives
    if (m_backlog.range().first > last)
        return;
    m_backlog.acknowledge(last);
    m_room.set();
    advance();
}

/// The server works.
void Sender::advance()
{
    m_lastProgress = Clock::now();
    m_awaySince.reset();
    m_isLossTold = false;
    m_pause = {};
    m_reason.clear();
}

void Sender::lose()
{
    m_isAway = true;
    m_room.set();
    if (std::exchange(m_isRefused, false)) {
        m_isOldServer = true; // greet it as it expects, at once
        return;
    }
    m_mayHaveLost = m_mayHaveLost || (!m_destination.wantsAnswers && m_next > m_begin);
    if (m_reason.empty())
        m_reason = vxtools::textOfError(ECONNRESET);
    if (!m_awaySince)
        m_awaySince = Clock::now();
    m_pause = std::clamp<std::chrono::milliseconds>(2 * m_pause, FIRST_PAUSE, LONGEST_PAUSE);
    if (m_keeps && m_isEnding)
        giveUp(m_reason);
    checkPatience();
    if (!(m_isEnding && isAllDone()))
        tellLoss();
}

void Sender::tellLoss()
{
    if (!std::exchange(m_isLossTold, true))
        m_teller.tell(TRYING_AGAIN(m_name, m_reason));
}

/// Between half of the time and all of it, so that the clients of a server that was away do not all come at once.
void Sender::pause()
{
    std::uniform_int_distribution<std::int64_t> part(m_pause.count() / 2, m_pause.count());
    const Clock::time_point until = Clock::now() + std::chrono::milliseconds(part(m_random));
    while (!m_isStopping && Clock::now() < until) {
        waitFor(-1, 0, until);
        m_wake.clear();
        if (m_keeps && m_isEnding)
            return; // for a last try
    }
}

bool Sender::waitFor(int descriptor, short events, Clock::time_point until)
{
    checkPatience();
    pollfd waits[] = {{descriptor, events, 0}, {m_wake.descriptor(), POLLIN, 0},
        {m_signalSince ? -1 : endingDescriptor(), POLLIN, 0}};
    ::poll(waits, std::size(waits), millisecondsUntil(std::min(until, patienceEnd())));
    return waits[0].revents != 0;
}

void Sender::checkPatience()
{
    if (Clock::now() >= patienceEnd())
        giveUp(m_reason.empty() ? vxtools::textOfError(ETIMEDOUT) : m_reason);
}

} // namespace vxlog
