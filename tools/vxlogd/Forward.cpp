#include "Forward.h"

#include "Clients.h"
#include "Complaint.h"
#include "LineText.h"
#include "common/Failure.h"
#include "common/FileName.h"
#include "common/Input.h"

#include <vx/Describe.h>
#include <vx/Result.h>
#include <vx/io/ByteArrayOutputStream.h>
#include <vx/io/OutputStreamWriter.h>
#include <vx/log/JsonLogWriter.h>
#include <vx/log/LogEntry.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <iterator>
#include <poll.h>
#include <span>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>

namespace vxlogd {

using namespace std::chrono_literals;
using vx::Reference;
using vx::String;
using vxtools::Failure;

namespace {

constexpr auto LONGEST_WAIT = 1000ms; ///< the producer has work to do
constexpr auto WAIT_WITHOUT_WATCH = 100ms;
constexpr auto TIME_AT_END = 5s; ///< for what the brokers do not have yet
constexpr auto BETWEEN_POSITIONS = 1s;

class Entry final : public vx::log::LogEntry { };

/// An object of JSON with these fields, without its last brace.
std::string openObject(std::initializer_list<std::pair<const char16_t*, String>> fields)
{
    const Reference<Entry> entry(new Entry);
    for (const auto& [name, value] : fields)
        entry->setField(name, Reference<const vx::Object>(new String(value)).get());
    const Reference<vx::io::ByteArrayOutputStream> bytes(new vx::io::ByteArrayOutputStream);
    const Reference<vx::io::Writer> writer(new vx::io::OutputStreamWriter(bytes.get(), u"UTF-8", 1024));
    vx::log::JsonLogWriter::create(writer.get())->process(entry.get());
    const std::string text(
        reinterpret_cast<const char*>(bytes->getBytes()), static_cast<std::size_t>(bytes->getSize()));
    return text.substr(0, text.rfind('}'));
}

/// The fields of a line of the log, beginning with a comma, but not the number that the server gave it: it begins anew
/// with each start.
std::string_view fieldsOf(std::string_view line)
{
    constexpr std::string_view NUMBER = "{\"sequence\":";
    if (line.starts_with(NUMBER)) {
        const std::size_t end = line.find_first_not_of("0123456789", NUMBER.size());
        if (end != line.npos && end > NUMBER.size() && (line[end] == ',' || line.substr(end) == "}"))
            return line.substr(end);
    }
    return line.substr(line == "{}" ? 1 : 0);
}

/// The host of the client that sent a line, without its port: its lines keep their order. Quotes in a text are escaped,
/// so that no text looks like a field.
std::string_view peerOf(std::string_view line)
{
    constexpr std::string_view FIELD = R"("peer":")";
    const std::size_t begin = line.find(FIELD);
    if (begin == line.npos)
        return {};
    const std::size_t start = begin + FIELD.size();
    const std::string_view peer = line.substr(start, line.find('"', start) - start);
    return peer.substr(0, peer.rfind(':'));
}

/// A file beside the log. Its name begins with a dot, so that "LOG*" finds only logs.
std::string besideLog(const std::string& log, const char* extension)
{
    const std::size_t name = log.rfind('/') + 1; // 0 without a folder
    return log.substr(0, name) + "." + log.substr(name) + extension;
}

int lockFile(const std::string& path)
{
    const int file = vxtools::openFile(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0)
        throw Failure(path, vxtools::textOfError(errno));
    if (::flock(file, LOCK_EX | LOCK_NB) == 0) // the system frees it when the process ends
        return file;
    const int error = errno;
    ::close(file);
    throw Failure(path, error == EWOULDBLOCK ? "another server forwards this log" : vxtools::textOfError(error));
}

} // namespace

Forwarder::Forwarder(const Settings& settings, Clients& clients, Undelivered& undelivered)
    : m_address(settings.forward)
    , m_positionPath(besideLog(vxtools::canonicalPath(settings.log).toUtf8(), ".forward"))
    , m_host(vxtools::hostName())
    , m_clients(clients)
    , m_undelivered(undelivered)
    , m_producer(m_address.openProducer(false))
{
    const std::string log = vxtools::canonicalPath(settings.log).toUtf8();
    m_lock = lockFile(m_positionPath + ".lock");
    m_wake = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    m_watch = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    const std::string folder = log.substr(0, log.rfind('/') + 1);
    if (m_watch >= 0
        && ::inotify_add_watch(m_watch, folder.c_str(), IN_MODIFY | IN_CREATE | IN_MOVED_TO | IN_ONLYDIR) < 0)
        ::close(std::exchange(m_watch, -1));
    const std::optional<ForwardPosition> position = ForwardPosition::load(m_positionPath);
    m_source = std::make_unique<ForwardSource>(log, position);
    restoreClients(log, position);
    m_position = position.value_or(ForwardPosition {.id = Clients::newId()});
    m_number = m_position.lines;
    m_part = m_source->part();
    if (!position && m_part != nullptr) {
        m_position.device = m_part->device;
        m_position.inode = m_part->inode;
        m_position.number = m_part->number;
        m_position.start = m_part->hashStart(0);
    }
    m_position.save(m_positionPath);
    m_head
        = openObject({{u"host", String(m_host)}, {u"process", u"vxlogd-" + String(std::string_view(m_position.id))}});
    m_head += ",\"sequence\":";
    if (m_source->lostFiles() > 0)
        complain("forwarding: the file of the log that was being forwarded is gone, with what was not forwarded");
    vxtools::checkKafka(*m_producer, m_producer->SetWake(m_wake));
    count();
}

Forwarder::~Forwarder()
{
    if (m_thread.joinable())
        stop();
    for (const int file : {m_lock, m_wake, m_watch}) {
        if (file >= 0)
            ::close(file);
    }
}

Forwarder::Origin Forwarder::originOf(std::string_view line)
{
    constexpr std::string_view CLIENT = R"("client":")", LINE = R"("line":)";
    const std::size_t client = line.find(CLIENT), number = line.find(LINE);
    if (client == line.npos || number == line.npos)
        return {};
    Origin origin;
    const std::size_t begin = client + CLIENT.size();
    origin.client = line.substr(begin, line.find('"', begin) - begin);
    std::from_chars(line.data() + number + LINE.size(), line.data() + line.size(), origin.line);
    return origin;
}

/// The clients of an earlier server send again what was not acknowledged. The log has some of that.
void Forwarder::restoreClients(const std::string& log, const std::optional<ForwardPosition>& position)
{
    if (position && !m_clients.restore(position->clients))
        throw Failure(m_positionPath, "has a wrong line about a client");
    if (!m_undelivered.isActive() && (!position || position->clients.empty()))
        return;
    ForwardSource source(log, position, false);
    while (const std::optional<ForwardSource::Line> line = source.next()) {
        const Origin origin = originOf(line->text);
        if (Clients::isId(origin.client))
            m_undelivered.restore(std::string(origin.client), m_clients.find(origin.client, nullptr, 0), origin.line);
    }
    m_undelivered.setWritten();
}

void Forwarder::start()
{
    m_thread = std::thread([this] { run(); });
}

void Forwarder::stop()
{
    constexpr std::uint64_t ONE = 1;
    m_isStopping = true;
    static_cast<void>(!::write(m_wake, &ONE, sizeof ONE));
    m_thread.join();
}

ForwardCounts Forwarder::getCounts() const
{
    ForwardCounts counts;
    {
        const std::lock_guard lock(m_countsLock);
        counts = m_counts;
    }
    counts.waitingLines = m_undelivered.countLines();
    return counts;
}

void Forwarder::run()
{
    std::optional<Clock::time_point> end;
    for (;;) {
        if (m_isStopping && !end) // before the last look at the log
            end = Clock::now() + TIME_AT_END;
        bool hasMore = false;
        try {
            hasMore = work();
        } catch (const std::exception& failure) { // of the log or the position; the next turn tries again
            tellTrouble(failure.what());
        } catch (const vx::Exception& failure) {
            tellTrouble(vx::explain(failure).toUtf8());
        }
        const bool isDone = !hasMore && !m_line && m_sent.empty();
        if (end && (isDone || !m_told.empty() || Clock::now() >= *end))
            break;
        if (!hasMore)
            wait();
    }
    try {
        m_lastKept = {};
        keepPosition();
        m_producer = nullptr;
    } catch (const std::exception& failure) {
        complain(std::string("forwarding: ") + failure.what());
    }
}

bool Forwarder::work()
{
    // Reports first: if there is no room for more after them, further ones will come, and wake this thread.
    takeReports();
    const std::uint64_t written = m_undelivered.getWritten();
    const bool hasMore = sendAll();
    keepPosition();
    count();
    if (!hasMore)
        findLost(written);
    tellTrouble(vxtools::textFrom([this](IVXCharBuffer* text) { return m_producer->GetTrouble(text); }));
    return hasMore;
}

bool Forwarder::sendAll()
{
    constexpr int MOST = 1000; // reports are taken between them
    for (int count = 0; count < MOST; ++count) {
        if (!m_line)
            m_line = m_source->next();
        if (!m_line || !send(*m_line))
            return false;
        m_line.reset();
    }
    return true;
}

bool Forwarder::send(const ForwardSource::Line& line)
{
    m_message = m_head;
    m_message += std::to_string(m_number + 1);
    if (line.text.starts_with('{') && line.text.ends_with('}')) {
        const std::string_view fields = fieldsOf(line.text);
        if (fields.starts_with('{'))
            m_message.append(",").append(fields.substr(1));
        else
            m_message.append(fields);
    } else { // of another program, or torn
        m_message.append(",").append(openObject({{u"text", String(readableText(line.text))}}).substr(1)).append("}");
    }
    const std::string_view peer = peerOf(line.text);
    const std::int32_t result = vxtools::sendTo(*m_producer, peer.empty() ? m_host : peer, m_message);
    if (result == vx::RESULT_NOT_AVAILABLE)
        return false;
    vxtools::checkKafka(*m_producer, result);
    ++m_number;
    const Origin origin = originOf(line.text);
    m_sent.push_back({line.part, line.end, std::string(origin.client), origin.line});
    return true;
}

void Forwarder::takeReports()
{
    std::int32_t results[1024];
    std::int32_t count = 0;
    do {
        count = std::size(results);
        vxtools::checkKafka(*m_producer, m_producer->TakeReports(results, &count, 0));
        const auto isRefused = [](std::int32_t result) { return result < 0; };
        const std::span<const std::int32_t> all(results, static_cast<std::size_t>(count));
        const auto refused = static_cast<std::uint64_t>(std::ranges::count_if(all, isRefused));
        if (refused > 0) {
            const std::string why = vxtools::failureOf(*m_producer, *std::ranges::find_if(all, isRefused));
            if (m_counts.refused == 0) // only this thread changes it
                complain("forwarding: a line stays only in the log: " + why);
        }
        for (std::int32_t report = 0; report < count; ++report) {
            m_part = std::move(m_sent.front().part);
            m_position.offset = m_sent.front().end;
            if (!m_sent.front().client.empty())
                m_undelivered.deliver(m_sent.front().client, m_sent.front().line);
            m_sent.pop_front();
        }
        m_position.lines += static_cast<std::uint64_t>(count);
        m_isChanged = m_isChanged || count > 0;
        const std::lock_guard lock(m_countsLock);
        m_counts.refused += refused;
        m_counts.forwarded += static_cast<std::uint64_t>(count) - refused;
    } while (count == std::size(results));
}

/// Lines that still wait when all of the log has arrived are not in the log any more. Those in a file that is being
/// rotated at this moment may be overlooked, so that the next turn decides. `written` is from before the look at the log.
void Forwarder::findLost(std::uint64_t written)
{
    const bool hasAll = !m_line && m_sent.empty() && m_counts.waitingBytes == 0; // only this thread changes it
    if (hasAll)
        m_undelivered.loseBefore(m_writtenBefore);
    m_writtenBefore = hasAll ? written : 0;
}

/// Tells when it begins and when it ends.
void Forwarder::tellTrouble(const std::string& trouble)
{
    if (m_told.empty() && !trouble.empty())
        complain("forwarding waits: " + trouble);
    else if (!m_told.empty() && trouble.empty())
        complain("forwarding goes on");
    m_told = trouble;
    m_undelivered.setTrouble(trouble);
    const std::lock_guard lock(m_countsLock);
    m_counts.trouble = trouble;
}

/// Not after each line: a crash lets the lines of the last second be sent again.
void Forwarder::keepPosition()
{
    const Clock::time_point now = Clock::now();
    if (!m_isChanged || now - m_lastKept < BETWEEN_POSITIONS)
        return;
    m_position.device = m_part->device;
    m_position.inode = m_part->inode;
    m_position.number = m_part->number;
    m_position.start = m_part->hashStart(m_position.offset);
    m_position.clients = m_undelivered.isActive() ? m_clients.save() : std::string();
    m_position.save(m_positionPath);
    m_lastKept = now;
    m_isChanged = false;
}

void Forwarder::count()
{
    const LogPart* const part = m_part != nullptr ? m_part.get() : m_source->part().get();
    const std::int64_t waiting = m_source->countBytesAfter(part, m_position.offset);
    const std::lock_guard lock(m_countsLock);
    m_counts.target = m_address.name();
    m_counts.waitingBytes = waiting;
    m_counts.lostFiles = m_source->lostFiles();
}

void Forwarder::wait()
{
    pollfd waits[] = {{m_wake, POLLIN, 0}, {m_watch, POLLIN, 0}};
    const auto longest = m_watch < 0 ? WAIT_WITHOUT_WATCH : LONGEST_WAIT;
    ::poll(waits, std::size(waits), static_cast<int>(longest.count()));
    char news[4096];
    while (::read(m_wake, news, sizeof news) > 0)
        ;
    while (m_watch >= 0 && ::read(m_watch, news, sizeof news) > 0)
        ;
}

} // namespace vxlogd
