#include "Connection.h"

#include "Complaint.h"
#include "LineText.h"

#include <vx/net/InetSocketAddress.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <mutex>
#include <utility>

namespace vxlogd {

namespace {

using vxtools::Wire;

constexpr std::size_t MOST_OPEN_LINES = 64; // while many lines of all clients wait for the log
constexpr std::size_t MOST_OPEN_LINES_OF_FEW = 1024;
constexpr std::size_t MOST_OPEN_BYTES = 64 * 1024;
constexpr std::size_t READ_SIZE = 16 * 1024;
constexpr std::chrono::seconds TIME_TO_HEAR(5);
constexpr std::chrono::seconds TIME_TO_REST(1); // until the memory of a silent connection is returned

std::string textOf(const vx::net::InetSocketAddress* address)
{
    vx::String text;
    if (address != nullptr)
        address->getDiagnosticStr(text);
    return text.toUtf8();
}

} // namespace

Connection::Connection(std::unique_ptr<vx::net::TcpWorkerSocket2> socket, Intake& intake, const Limits& limits,
    std::shared_ptr<Waker> waker, std::uint64_t number)
    : Connection(std::move(socket), intake, limits, std::move(waker), number, limits.getTls().get())
{
}

Connection::Connection(std::unique_ptr<vx::net::TcpWorkerSocket2> socket, Intake& intake, const Limits& limits,
    std::shared_ptr<Waker> waker, std::uint64_t number, const vxtools::TlsContext* tls)
    : m_socket(std::move(socket))
    , m_wire(m_socket->getId(), tls)
    , m_isEncrypted(tls != nullptr)
    , m_intake(intake)
    , m_limits(limits)
    , m_waker(std::move(waker))
    , m_number(number)
    , m_progress(std::make_shared<Progress>(m_waker, m_number))
    , m_owner(m_progress->takeOver(m_waker, m_number, 1))
    , m_peer(textOf(m_socket->getPeerAddress()))
    , m_level(limits.level)
{
}

bool Connection::wantsToRead() const
{
    if (m_isParting)
        return true;
    return !m_hasEnded && m_wire.wantsToRead()
        && (m_isRefused || (m_input.size() < std::max<std::size_t>(m_limits.maxLine + 1, READ_SIZE) && hasRoom()));
}

void Connection::read()
{
    if (m_isParting) {
        const Wire::Result result = m_wire.drop();
        m_isParting = result == Wire::Result::DONE || result == Wire::Result::LATER;
        return;
    }
    const std::size_t length = m_input.size();
    const Wire::Result result = m_wire.receive(m_input, READ_SIZE);
    const std::size_t count = m_input.size() - length;
    switch (result) {
    case Wire::Result::DONE:
        m_lastSign = Clock::now();
        m_lastBytes -= m_isFinishing ? std::min(m_lastBytes, count) : 0;
        break;
    case Wire::Result::LATER:
        m_hasEnded = m_isFinishing;
        break;
    case Wire::Result::BROKEN:
        if (m_isEncrypted) {
            complain(m_peer + ": " + m_wire.reason());
            m_wire.endOutput();
            m_isParting = !m_isFinishing;
            m_partedAt = Clock::now();
        }
        m_isBroken = true;
        [[fallthrough]];
    case Wire::Result::CLOSED:
        m_hasEnded = true; // the lines before are valid
        break;
    }
    if (m_isFinishing && m_lastBytes == 0)
        m_hasEnded = true;
    if (m_isRefused)
        m_input.clear();
}

void Connection::write()
{
    std::string_view rest = m_output;
    const Wire::Result result = m_wire.send(rest);
    if (result == Wire::Result::BROKEN) {
        m_output.clear();
        m_isBroken = true;
        m_isFinishing = true;
    } else if (rest.size() < m_output.size()) {
        m_output.erase(0, m_output.size() - rest.size());
        m_lastSign = Clock::now();
    }
    if (m_isRefused && m_output.empty())
        m_wire.endOutput();
}

void Connection::goOn()
{
    if (!m_progress->isOwner(m_owner) && !m_isRefused)
        m_hasEnded = m_isBroken = m_isLate = true; // the client sends its lines again on its other connection
    if (m_isLate)
        return;
    takeLines();
    const Progress::State state = m_progress->takeNews();
    if (std::exchange(m_doneBefore, state.done) != state.done)
        m_lastSign = Clock::now();
    if (m_isRefused || m_isBroken)
        return;
    if (m_wantsAnswers && m_output.empty() && (state.done > m_answered || std::exchange(m_owesAnswer, false))) {
        m_output = "ack " + std::to_string(state.done) + "\n";
        m_answered = state.done;
        write();
    }
    if (m_wantsAnswers && m_output.empty())
        tellTrouble();
    if (state.hasLost && state.openLines == 0) {
        // The client has these lines, and sends them again on its next connection.
        if (m_isNumbered)
            m_hasEnded = m_isBroken = m_isLate = true;
        else
            refuse("lines were removed from the log before the brokers had them");
    }
    if (state.hasFailed)
        refuse("the log cannot be written");
}

void Connection::finish()
{
    m_isFinishing = true;
    m_isParting = false;
    while (wantsToRead()) {
        read();
        takeLines();
    }
}

void Connection::endIfSilent(Clock::time_point now)
{
    if (now - m_lastSign >= TIME_TO_REST) {
        m_input.shrink_to_fit();
        m_output.shrink_to_fit();
    }
    const unsigned int idleSeconds = m_limits.idleSeconds;
    const Progress::State state = m_progress->state();
    const bool isSilent = idleSeconds != 0 && now - m_lastSign >= std::chrono::seconds(idleSeconds)
        && state.openLines == 0 && state.waitingLines == 0 && !m_intake.isFull();
    if (isSilent || ((m_isRefused || m_isParting) && now - m_partedAt >= TIME_TO_HEAR)) {
        m_isParting = false;
        m_hasEnded = true;
        m_isBroken = true;
        m_output.clear();
        takeLines();
    }
}

bool Connection::isOver() const
{
    const Progress::State state = m_progress->state();
    if (m_isLate)
        return true; // its client has another connection, with the same progress
    // What waits for brokers that are away when the server ends is acknowledged by the next one.
    if (m_isFinishing && state.openLines == 0 && state.waitingLines > 0 && m_intake.getUndelivered().getTrouble())
        return true;
    const bool isAnswered = !m_wantsAnswers || (state.done <= m_answered && state.waitingLines == 0);
    return m_hasEnded && !m_isParting && m_input.empty() && state.openLines == 0 && m_output.empty()
        && (m_isBroken || !m_wire.wantsToWrite(false))
        && (m_isBroken || m_isRefused || (!state.hasFailed && !state.hasLost && isAnswered));
}

/// The client keeps its lines until they are acknowledged, which may take long.
void Connection::tellTrouble()
{
    const char* what = "wait the log cannot be written: ";
    std::shared_ptr<const std::string> trouble = m_intake.getTrouble();
    if (trouble == nullptr && m_progress->state().waitingLines > 0) {
        what = "wait the brokers do not have the lines yet: ";
        trouble = m_intake.getUndelivered().getTrouble();
    }
    if (trouble == nullptr || trouble == m_toldTrouble)
        return;
    m_toldTrouble = trouble;
    m_output = what + *trouble + "\n";
    write();
}

bool Connection::hasRoom() const
{
    if (m_intake.isFull() && !m_isFirstLine) // a greeting is read, so that its client can be told
        return false;
    if (awaitsBrokers() && m_intake.getUndelivered().isFull())
        return false;
    const Progress::State state = m_progress->state();
    return state.openLines < (m_intake.isShort() ? MOST_OPEN_LINES_OF_FEW : MOST_OPEN_LINES)
        && state.openLines + state.waitingLines < MOST_OPEN_LINES_OF_FEW
        && state.openBytes + state.waitingBytes < MOST_OPEN_BYTES && !state.hasLost;
}

void Connection::takeLines()
{
    const std::size_t maxLine = m_limits.maxLine;
    std::string_view rest = m_input;
    std::shared_ptr<Progress> progress = m_progress;
    std::unique_lock turn(progress->getTurn());
    try {
        while (!rest.empty() && !m_isRefused && hasRoom()) {
            const std::size_t end = rest.find('\n');
            if (end == rest.npos && !m_hasEnded && !m_skipsLine && rest.size() <= maxLine)
                break;
            std::string_view line = rest.substr(0, end);
            rest.remove_prefix(end != rest.npos ? end + 1 : rest.size());
            if (!std::exchange(m_skipsLine, end == std::string_view::npos)) {
                if (m_isNumbered && end == rest.npos && line.size() <= maxLine)
                    break; // the client sends the whole line on its next connection
                if (line.ends_with('\r'))
                    line.remove_suffix(1);
                takeLine(line.substr(0, maxLine), line.size() > maxLine);
                if (progress != m_progress) { // it was a greeting
                    turn.unlock();
                    progress = m_progress;
                    turn = std::unique_lock(progress->getTurn());
                }
            }
        }
    } catch (...) {
        submitBatch();
        throw;
    }
    submitBatch();
    m_input.erase(0, m_isRefused ? m_input.size() : m_input.size() - rest.size());
}

void Connection::takeLine(std::string_view line, bool isCut)
{
    constexpr std::string_view GREETING = "VXLOG ";
    if (std::exchange(m_isFirstLine, false) && line.starts_with(GREETING)) {
        greet(line.substr(GREETING.size()));
        return;
    }
    constexpr std::string_view SIGN_OF_LIFE = "\x16";
    if (m_beats && line == SIGN_OF_LIFE)
        return;
    switch (m_progress->claim(m_owner, ++m_lines)) {
    case Progress::Claim::NEW:
        break;
    case Progress::Claim::LATE:
        m_hasEnded = m_isBroken = m_isLate = true; // the client sends this line again on its other connection
        return;
    case Progress::Claim::REPEATED:
        return;
    }
    const int level = takeLevel(line);
    m_progress->begin(line.size());
    try {
        std::string converted;
        std::string_view text = readableText(line, converted);
        if (isCut)
            text = converted = std::string(text) + " [cut]";
        addToBatch(line.size(), level, text);
    } catch (...) {
        m_progress->fail(m_lines, 1, line.size());
        throw;
    }
}

void Connection::addToBatch(std::size_t bytes, int level, std::string_view text)
{
    if (m_batch != nullptr && m_batch->getNextLine() != m_lines)
        submitBatch();
    if (m_batch == nullptr) {
        const bool isActive = m_intake.getUndelivered().isActive();
        if (isActive && m_client.empty()) {
            m_client = Clients::newId();
            m_client.front() = 'x'; // no client has this id
        }
        m_batch = new Batch(
            m_progress, m_peer, m_intake.getForm(), isActive ? m_client : std::string(), isActive && m_wantsAnswers);
    }
    m_batch->add(m_lines, bytes, level, text);
    m_intake.expect(bytes);
}

void Connection::submitBatch()
{
    vx::Reference<Batch> batch;
    std::swap(batch, m_batch);
    if (batch != nullptr && batch->getSize() > 0)
        m_intake.submit(batch);
}

/// Removes the prefix "<3>".
int Connection::takeLevel(std::string_view& line) const
{
    int level = 0;
    const std::size_t end = m_hasLevels && line.starts_with('<') ? line.find('>') : line.npos;
    if (end == line.npos)
        return m_level;
    const auto [stop, error] = std::from_chars(line.data() + 1, line.data() + end, level);
    if (error != std::errc() || stop != line.data() + end)
        return m_level;
    line.remove_prefix(end + 1);
    return level;
}

void Connection::greet(std::string_view options)
{
    std::string_view client;
    std::uint64_t first = 1;
    while (!options.empty()) {
        const std::string_view option = options.substr(0, options.find(' '));
        options.remove_prefix(std::min(option.size() + 1, options.size()));
        if (option.empty())
            continue;
        const std::size_t sign = option.find('=');
        const std::string_view name = option.substr(0, sign);
        const std::string_view value = option.substr(sign != option.npos ? sign + 1 : option.size());
        const auto reads = [&](auto& number) {
            const auto [stop, error] = std::from_chars(value.data(), value.data() + value.size(), number);
            return error == std::errc() && stop == value.data() + value.size();
        };
        int number = 0;
        if (name == "level" && reads(number))
            m_level = number;
        else if (name == "ack" && reads(number))
            m_wantsAnswers = number != 0;
        else if (name == "beat" && reads(number))
            m_beats = number != 0;
        else if (name == "prefix" && reads(number))
            m_hasLevels = number != 0;
        else if (name == "client" && Clients::isId(value))
            client = value;
        else if (name != "seq" || !reads(first) || first == 0)
            return refuse(
                "the greeting has options level=NUMBER, ack=0|1, beat=0|1, prefix=0|1, client=ID and seq=NUMBER");
    }
    if (!client.empty())
        resume(client, first);
}

void Connection::resume(std::string_view id, std::uint64_t first)
{
    m_progress = m_intake.getClients().find(id, m_waker, m_number);
    m_owner = m_progress->takeOver(m_waker, m_number, first);
    if (m_owner == 0)
        return refuse("the log could not be written");
    m_isNumbered = true;
    if (m_wantsAnswers)
        m_client = id;
    m_lines = first - 1;
    m_doneBefore = m_answered = m_progress->state().done;
    m_owesAnswer = true;
}

void Connection::refuse(const std::string& reason)
{
    m_output += "err " + reason + "\n"; // a part of an answer may have been sent
    m_isRefused = true;
    m_partedAt = Clock::now();
    write();
}

} // namespace vxlogd
