#include "Page.h"

#include "../Complaint.h"
#include "../LineText.h"
#include "Connections.h"
#include "Files.h"
#include "Guard.h"
#include "Place.h"
#include "common/Failure.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <memory>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace vxlogd::http {

namespace {

constexpr std::size_t MOST_CONNECTIONS = 64;
constexpr int MOST_WATCHERS = 16;
constexpr std::size_t MOST_TEXT = 8192; ///< characters of an entry that are shown

constexpr const char* POLICY = "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src "
                               "'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

std::string minutesOf(const Tail& tail)
{
    std::string text = "[";
    for (const Tail::Minute& minute : tail.getMinutes()) {
        text.append(text.size() > 1 ? "," : "").append("{\"start\":").append(std::to_string(minute.start * 60));
        text.append(",\"levels\":{");
        const char* separator = "";
        for (const auto& [level, count] : minute.counts) {
            text.append(separator).append("\"");
            text.append(level == Tail::OTHER_LEVELS ? "other" : std::to_string(level));
            text.append("\":").append(std::to_string(count));
            separator = ",";
        }
        text += "}}";
    }
    return text + "]";
}

/// Sends entries to one watcher as events, as they come.
class Stream {
public:
    Stream(Tail& tail, std::atomic<int>& watchers, std::uint64_t from)
        : m_tail(tail)
        , m_watchers(watchers)
        , m_next(from)
    {
    }
    ~Stream() { --m_watchers; }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    bool send(httplib::DataSink& sink)
    {
        constexpr std::size_t MOST_LINES = 50;
        constexpr std::chrono::seconds BEAT(2); // finds a client that has gone
        const Tail::Portion portion = m_tail.read(m_next, MOST_LINES, BEAT);
        if (m_tail.isClosed() || !sink.is_writable())
            return false;
        std::string text;
        if (portion.missed > 0)
            text.append("event: missed\ndata: ").append(std::to_string(portion.missed)).append("\n\n");
        std::uint64_t number = portion.next - portion.lines.size();
        for (const Tail::Line& line : portion.lines) {
            text.append("id: ").append(std::to_string(++number)).append("\ndata: ");
            text.append(toJson(line, MOST_TEXT)).append("\n\n");
        }
        if (text.empty())
            text = ": \n\n";
        m_next = portion.next;
        return sink.write(text.data(), text.size());
    }

private:
    Tail& m_tail;
    std::atomic<int>& m_watchers;
    std::uint64_t m_next;
};

std::vector<std::string> namesIn(const std::string& list)
{
    std::vector<std::string> names;
    for (std::size_t start = 0; start <= list.size();) {
        const std::size_t end = std::min(list.find(',', start), list.size());
        if (end > start)
            names.push_back(list.substr(start, end - start));
        start = end + 1;
    }
    return names;
}

} // namespace

class Page::Site final : public httplib::Server {
public:
    Site(const Settings& settings, Status& status, Tail& tail)
        : m_place(placeIn(settings.http).value())
        , m_guard(settings.httpToken, namesIn(settings.httpHost))
        , m_status(status)
        , m_tail(tail)
        , m_watch(tail)
    {
        m_stop = ::eventfd(0, EFD_CLOEXEC);
        set_socket_options([](int socket) {
            const int yes = 1; // and not SO_REUSEPORT, by which another program could take connections
            ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        });
        if (m_place.port == 0)
            m_port = bind_to_any_port(m_place.host);
        else
            m_port = bind_to_port(m_place.host, m_place.port) ? m_place.port : -1;
        if (m_stop == -1 || m_port <= 0) {
            ::close(m_stop);
            throw vxtools::Failure("--http=" + settings.http, "the page cannot listen there");
        }
        m_guard.setPort(m_port);
        new_task_queue = [this]() -> httplib::TaskQueue* {
            const std::lock_guard lock(m_lock);
            if (m_isStopping)
                stopListening();
            return new Connections(MOST_CONNECTIONS);
        };
        set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
            handle(request, response);
            return HandlerResponse::Handled;
        });
    }

    ~Site() override
    {
        m_tail.close();
        ::eventfd_write(m_stop, 1);
        {
            const std::lock_guard lock(m_lock);
            m_isStopping = true;
            stopListening();
        }
        if (m_thread.joinable())
            m_thread.join();
        ::close(m_stop);
    }

    std::string getAddress() const
    {
        const bool isSix = m_place.host.find(':') != std::string::npos;
        return "http://" + (isSix ? '[' + m_place.host + ']' : m_place.host) + ':' + std::to_string(m_port) + '/';
    }

    void start()
    {
        m_thread = std::thread([this] {
            constexpr int SECOND = 1000;
            bool isTold = false;
            while (!m_isStopping) {
                ::listen(svr_sock_, MOST_CONNECTIONS); // the library lets only a few wait
                listen_after_bind();
                if (m_isStopping)
                    return;
                if (!std::exchange(isTold, true)) // too many open files in the system, say
                    complain("the page is interrupted; it goes on when it can");
                pollfd stop {m_stop, POLLIN, 0};
                ::poll(&stop, 1, SECOND);
                bind_to_port(m_place.host, m_port);
            }
        });
    }

private:
    /// Call this under the lock.
    void stopListening()
    {
        if (is_running() && svr_sock_ != INVALID_SOCKET)
            stop();
    }

    bool process_and_close_socket(socket_t socket) override
    {
        Exchange exchange(socket, m_stop);
        if (Connections::isRefused()) {
            exchange.sendQuietly("HTTP/1.1 503 Service Unavailable\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        } else if (const Exchange::Head head = exchange.readHead(); head == Exchange::Head::TOO_LARGE) {
            exchange.sendQuietly(
                "HTTP/1.1 431 Request Header Fields Too Large\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        } else if (head == Exchange::Head::COMPLETE) {
            bool isClosed = false;
            const auto simplify = [](httplib::Request& request) {
                request.ranges.clear(); // parts of an answer, and its compression, only cost time
                request.headers.erase("Range");
                request.headers.erase("Accept-Encoding");
            };
            process_request(exchange, true, isClosed, simplify);
        }
        ::shutdown(socket, SHUT_RDWR);
        ::close(socket);
        return true;
    }

    void handle(const httplib::Request& request, httplib::Response& response)
    {
        for (const auto& [name, value] : {std::pair("Content-Security-Policy", POLICY),
                 {"X-Content-Type-Options", "nosniff"}, {"Referrer-Policy", "no-referrer"},
                 {"Cache-Control", "no-store"}, {"Cross-Origin-Resource-Policy", "same-origin"}})
            response.set_header(name, value);
        if (request.method != "GET" && request.method != "HEAD") {
            response.set_header("Allow", "GET, HEAD");
            return answer(response, 405, "the page is only read");
        }
        if (m_guard.lets(request, request.local_addr, response))
            route(request, response);
    }

    void route(const httplib::Request& request, httplib::Response& response)
    {
        response.status = 200;
        if (request.path == "/metrics")
            return response.set_content(toMetrics(m_status.gather()), "text/plain; version=0.0.4");
        if (request.path == "/health")
            return tellHealth(response);
        if (request.path == "/api/status")
            return tellStatus(response);
        if (request.path == "/tail")
            return watch(request, response);
        const auto file = std::ranges::find_if(FILES, [&](const File& each) { return request.path == each.path; });
        if (file == FILES.end())
            return answer(response, 404, "there is no such page");
        response.set_content(reinterpret_cast<const char*>(file->bytes), file->size, file->type);
    }

    void tellHealth(httplib::Response& response)
    {
        const std::string trouble = m_status.gather().counts.trouble;
        answer(response, trouble.empty() ? 200 : 503, trouble.empty() ? "ok" : "the log cannot be written: " + trouble);
    }

    void tellStatus(httplib::Response& response)
    {
        const Figures figures = m_status.gather();
        std::string text = "{\"log\":" + quoted(vx::String(readableText(figures.counts.path)));
        text.append(",\"trouble\":").append(quoted(vx::String(readableText(figures.counts.trouble))));
        text.append(",\"figures\":").append(toJson(figures));
        text.append(",\"minutes\":").append(minutesOf(m_tail)).append("}\n");
        response.set_content(text, "application/json");
    }

    void watch(const httplib::Request& request, httplib::Response& response)
    {
        if (++m_watchers > MOST_WATCHERS) {
            --m_watchers;
            response.set_header("Retry-After", "10");
            return answer(response, 503, "too many watch the log");
        }
        std::uint64_t from = 0;
        const std::string last = request.get_header_value("Last-Event-ID");
        if (std::from_chars(last.data(), last.data() + last.size(), from).ec != std::errc())
            from = m_tail.begin();
        const auto stream = std::make_shared<Stream>(m_tail, m_watchers, from);
        response.set_chunked_content_provider(
            "text/event-stream", [stream](std::size_t, httplib::DataSink& sink) { return stream->send(sink); });
    }

    const Place m_place;
    Guard m_guard;
    Status& m_status;
    Tail& m_tail;
    const Tail::Watch m_watch; ///< so that a new watcher sees what came before
    int m_stop = -1;
    int m_port = 0;
    std::atomic<int> m_watchers = 0;
    std::atomic<bool> m_isStopping = false;
    std::mutex m_lock; ///< so that the thread that listens is stopped just once
    std::thread m_thread;
};

Page::Page(const Settings& settings, Status& status, Tail& tail)
    : m_site(std::make_unique<Site>(settings, status, tail))
{
}

Page::~Page() = default;

std::string Page::getAddress() const
{
    return m_site->getAddress();
}

void Page::start()
{
    m_site->start();
}

void checkPage(const Settings& settings)
{
    if (!settings.http.empty())
        Guard(settings.httpToken, {});
}

} // namespace vxlogd::http
