#include "KafkaSender.h"

#include "Ending.h"
#include "Texts.h"
#include "common/Failure.h"

#include <vx/NumberBoxes.h>
#include <vx/Result.h>
#include <vx/String.h>
#include <vx/io/ByteArrayOutputStream.h>
#include <vx/io/OutputStreamWriter.h>
#include <vx/log/JsonLogWriter.h>
#include <vx/log/LogEntry.h>
#include <vx/log/ZonedTimeStamp.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <iterator>
#include <poll.h>
#include <span>
#include <utility>

namespace vxlog {

using namespace std::chrono_literals;
using vx::Reference;
using vx::String;
using vxtools::Failure;

namespace {

constexpr auto LONGEST_WAIT = 1s; ///< the producer has work to do

class Entry final : public vx::log::LogEntry { };

} // namespace

/// Makes the objects of JSON.
class KafkaSender::Entries {
public:
    explicit Entries(const std::string& process)
        : m_host(vxtools::hostName())
        , m_hostField(new String(m_host))
        , m_processField(new String(process))
        , m_writer(vx::log::JsonLogWriter::create(
              Reference<vx::io::Writer>(new vx::io::OutputStreamWriter(m_bytes.get(), u"UTF-8", 64 * 1024)).get()))
    {
    }

    const std::string& host() const { return m_host; }

    /// Valid until the next call. `line` is "<LEVEL>TEXT".
    std::string_view print(std::string_view line, std::uint64_t number)
    {
        int level = 0;
        const std::size_t end = line.find('>');
        if (line.starts_with('<') && end != line.npos) {
            std::from_chars(line.data() + 1, line.data() + end, level);
            line.remove_prefix(end + 1);
        }
        const Reference<Entry> entry(new Entry);
        const auto set = [&](const String& name, const vx::Object* value) {
            entry->setField(name, Reference<const vx::Object>(value).get());
        };
        set(m_names.host, m_hostField.get());
        set(m_names.process, m_processField.get());
        set(m_names.sequence, new vx::Integer64(static_cast<std::int64_t>(number)));
        set(m_names.timestamp, new vx::log::ZonedTimeStamp);
        set(m_names.level, new vx::Integer32(level));
        set(m_names.text, new String(line));
        m_bytes->reset();
        m_writer->process(entry.get());
        std::string_view text(
            reinterpret_cast<const char*>(m_bytes->getBytes()), static_cast<std::size_t>(m_bytes->getSize()));
        text.remove_suffix(text.ends_with('\n') ? 1 : 0);
        return text;
    }

private:
    const struct {
        String host = u"host";
        String process = u"process";
        String sequence = u"sequence";
        String timestamp = u"timestamp";
        String level = u"level";
        String text = u"text";
    } m_names;
    const std::string m_host;
    const Reference<const String> m_hostField;
    const Reference<const String> m_processField;
    const Reference<vx::io::ByteArrayOutputStream> m_bytes {new vx::io::ByteArrayOutputStream};
    const Reference<vx::log::ILogProcessor> m_writer;
};

KafkaSender::KafkaSender(const Destination& destination, bool keeps, Backlog& backlog, Teller& teller)
    : Delivery(destination, keeps, backlog, teller)
    , m_entries(std::make_unique<Entries>("vxlog-" + backlog.id()))
    , m_acknowledged(m_firstOfRun - 1)
    , m_sent(m_firstOfRun)
{
}

KafkaSender::~KafkaSender()
{
    stop();
}

void KafkaSender::disconnect() noexcept
{
    m_producer = nullptr;
}

void KafkaSender::connect()
{
    m_producer = m_destination.kafka->openProducer(true);
}

void KafkaSender::run()
{
    if (m_producer == nullptr)
        m_producer = m_destination.kafka->openProducer(false);
    vxtools::checkKafka(*m_producer, m_producer->SetWake(m_wake.descriptor()));
    for (;;) {
        m_wake.clear();
        const bool isEnding = m_isEnding; // before the look at the backlog
        // Reports first: if there is no room for more after them, further ones will come, and wake this thread.
        takeReports();
        sendAll();
        lookForTrouble();
        if (m_isStopping || (isEnding && isAllDone()))
            break;
        if (Clock::now() >= patienceEnd() || (m_keeps && isEnding && !m_trouble.empty()))
            giveUp(m_trouble.empty() ? vxtools::textOfError(ETIMEDOUT) : m_trouble);
        wait();
    }
    if (m_refused > 0)
        throw Failure(m_name, REFUSED(m_refused, m_refusal));
}

void KafkaSender::sendAll()
{
    constexpr std::size_t BLOCK_SIZE = 64 * 1024;
    for (;;) {
        if (m_rest.empty()) {
            m_block.clear();
            if (!readBacklog(m_block, BLOCK_SIZE))
                return; // the next turn comes soon
            m_rest = m_block;
            if (m_rest.empty())
                return;
        }
        const std::size_t end = m_rest.find('\n');
        const std::int32_t result
            = vxtools::sendTo(*m_producer, m_entries->host(), m_entries->print(m_rest.substr(0, end), m_sent));
        if (result == vx::RESULT_NOT_AVAILABLE)
            return;
        vxtools::checkKafka(*m_producer, result);
        m_rest.remove_prefix(end + 1);
        ++m_sent;
    }
}

void KafkaSender::takeReports()
{
    std::int32_t results[1024];
    std::int32_t count = 0;
    do {
        count = std::size(results);
        vxtools::checkKafka(*m_producer, m_producer->TakeReports(results, &count, 0));
        const auto isRefused = [](std::int32_t result) { return result < 0; };
        const std::span<const std::int32_t> all(results, static_cast<std::size_t>(count));
        if (const auto refused = std::ranges::find_if(all, isRefused); refused != all.end()) {
            const std::string why = vxtools::failureOf(*m_producer, *refused);
            if (m_refused == 0) {
                m_refusal = why;
                m_teller.tell(LINE_REFUSED(m_name, why));
            }
            m_refused += static_cast<std::uint64_t>(std::ranges::count_if(all, isRefused));
        }
        m_acknowledged += static_cast<std::uint64_t>(count);
        if (count > 0) {
            m_backlog.acknowledge(m_acknowledged);
            m_lastProgress = Clock::now();
            m_awaySince.reset();
            m_isTroubleTold = false;
            m_room.set();
        }
    } while (count == std::size(results));
}

void KafkaSender::lookForTrouble()
{
    m_trouble = vxtools::textFrom([this](IVXCharBuffer* text) { return m_producer->GetTrouble(text); });
    m_isAway = !m_trouble.empty();
    if (m_trouble.empty()) {
        m_awaySince.reset();
        return;
    }
    m_room.set();
    if (!m_awaySince || isAllDone()) // as long as nothing waits, nothing can be lost
        m_awaySince = Clock::now();
    if (!isAllDone() && !std::exchange(m_isTroubleTold, true))
        m_teller.tell(TRYING_AGAIN(m_name, m_trouble));
}

void KafkaSender::wait()
{
    const auto until = std::min(Clock::now() + LONGEST_WAIT, patienceEnd());
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
    pollfd waits[] = {{m_wake.descriptor(), POLLIN, 0}, {m_signalSince ? -1 : endingDescriptor(), POLLIN, 0}};
    ::poll(waits, std::size(waits), static_cast<int>(std::max<std::int64_t>(rest, 0)));
}

} // namespace vxlog
