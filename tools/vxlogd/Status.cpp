#include "Status.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <string_view>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <utility>

namespace vxlogd {

namespace {

struct FigureRow {
    const char* label; ///< for people, and the explanation of the metric
    const char* metric;
    const char* type;
    double (*get)(const Figures& figures);
};

constexpr FigureRow FIGURES[] = {
    {"seconds since the start", "uptime_seconds", "gauge", [](const Figures& figures) { return figures.uptime; }},
    {"connections", "connections", "gauge",
        [](const Figures& figures) { return static_cast<double>(figures.counts.connections); }},
    {"connections since the start", "connections_accepted_total", "counter",
        [](const Figures& figures) { return static_cast<double>(figures.counts.accepted); }},
    {"connections turned away", "connections_turned_away_total", "counter",
        [](const Figures& figures) { return static_cast<double>(figures.counts.turnedAway); }},
    {"lines written", "lines_written_total", "counter",
        [](const Figures& figures) { return static_cast<double>(figures.counts.written); }},
    {"lines lost", "lines_lost_total", "counter",
        [](const Figures& figures) { return static_cast<double>(figures.counts.lost); }},
    {"lines per second", "lines_per_second", "gauge", [](const Figures& figures) { return figures.linesPerSecond; }},
    {"lines in the queue", "queue_lines", "gauge",
        [](const Figures& figures) { return static_cast<double>(figures.counts.queuedLines); }},
    {"bytes in the queue", "queue_bytes", "gauge",
        [](const Figures& figures) { return static_cast<double>(figures.counts.queuedBytes); }},
    {"the log can be written", "log_writable", "gauge",
        [](const Figures& figures) { return figures.counts.trouble.empty() ? 1.0 : 0.0; }},
    {"bytes in the log", "log_bytes", "gauge", [](const Figures& figures) { return figures.fileBytes; }},
    {"bytes free for the log", "log_free_bytes", "gauge", [](const Figures& figures) { return figures.freeBytes; }},
};

struct ForwardRow {
    const char* label;
    const char* metric;
    const char* type;
    double (*get)(const ForwardCounts& counts);
};

constexpr ForwardRow FORWARD_FIGURES[] = {
    {"lines forwarded", "forwarded_lines_total", "counter",
        [](const ForwardCounts& counts) { return static_cast<double>(counts.forwarded); }},
    {"lines that brokers refused", "forward_refused_lines_total", "counter",
        [](const ForwardCounts& counts) { return static_cast<double>(counts.refused); }},
    {"older logs not forwarded", "forward_lost_logs_total", "counter",
        [](const ForwardCounts& counts) { return static_cast<double>(counts.lostFiles); }},
    {"bytes not forwarded yet", "forward_waiting_bytes", "gauge",
        [](const ForwardCounts& counts) { return static_cast<double>(counts.waitingBytes); }},
    {"lines that clients wait for", "forward_unacknowledged_lines", "gauge",
        [](const ForwardCounts& counts) { return static_cast<double>(counts.waitingLines); }},
    {"forwarding works", "forward_working", "gauge",
        [](const ForwardCounts& counts) { return counts.trouble.empty() ? 1.0 : 0.0; }},
};

/// Whole numbers without an exponent, others with one digit.
std::string numberText(double number)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.setf(std::ios::fixed);
    text.precision(number == std::floor(number) ? 0 : 1);
    text << number;
    return text.str();
}

/// The value of a label between its quotes.
std::string escaped(std::string_view value)
{
    std::string text;
    for (const char each : value) {
        if (each == '\\' || each == '"')
            text += '\\';
        text += each == '\n' ? std::string("\\n") : std::string(1, each);
    }
    return text;
}

} // namespace

std::string toText(const Figures& figures)
{
    constexpr std::size_t WIDTH = 28;
    std::string text;
    const auto add = [&](std::string label, std::string_view value) {
        label.resize(std::max(WIDTH, label.size() + 1), ' ');
        text.append(label).append(value).append("\n");
    };
    add("log", figures.counts.path);
    if (!figures.counts.trouble.empty())
        add("the log cannot be written", figures.counts.trouble);
    for (const FigureRow& row : FIGURES)
        add(row.label, numberText(row.get(figures)));
    if (const std::optional<ForwardCounts>& forward = figures.counts.forward) {
        add("forwarded to", forward->target);
        if (!forward->trouble.empty())
            add("forwarding waits", forward->trouble);
        for (const ForwardRow& row : FORWARD_FIGURES)
            add(row.label, numberText(row.get(*forward)));
    }
    return text;
}

std::string toMetrics(const Figures& figures)
{
    std::string text;
    const auto describe = [&](std::string_view name, std::string_view help, std::string_view type) {
        text.append("# HELP vxlogd_").append(name).append(" ").append(help).append("\n");
        text.append("# TYPE vxlogd_").append(name).append(" ").append(type).append("\n");
    };
    const auto addAll = [&](const auto& rows, const auto& counts) {
        for (const auto& row : rows) {
            describe(row.metric, row.label, row.type);
            text.append("vxlogd_").append(row.metric).append(" ").append(numberText(row.get(counts))).append("\n");
        }
    };
    addAll(FIGURES, figures);
    if (figures.counts.forward)
        addAll(FORWARD_FIGURES, *figures.counts.forward);
    describe("log_info", "the path of the log", "gauge");
    text.append("vxlogd_log_info{path=\"").append(escaped(figures.counts.path)).append("\"} 1\n");
    return text;
}

std::string toJson(const Figures& figures)
{
    std::string text = "{";
    for (const FigureRow& row : FIGURES) {
        text.append(text.size() > 1 ? ",\"" : "\"").append(row.metric).append("\":");
        text.append(numberText(row.get(figures)));
    }
    for (const ForwardRow& row : FORWARD_FIGURES) {
        if (figures.counts.forward)
            text.append(",\"").append(row.metric).append("\":").append(numberText(row.get(*figures.counts.forward)));
    }
    return text + "}";
}

Status::Status(std::function<Counts()> count)
    : m_count(std::move(count))
{
    sample();
}

Figures Status::gather()
{
    Figures figures {m_count(), 0, 0, -1, -1};
    const auto seconds
        = [now = Clock::now()](Clock::time_point since) { return std::chrono::duration<double>(now - since).count(); };
    figures.uptime = std::floor(seconds(m_start));
    {
        const std::lock_guard lock(m_lock);
        const Sample& oldest = m_samples.front();
        const double time = seconds(oldest.time);
        figures.linesPerSecond = time > 0 ? static_cast<double>(figures.counts.written - oldest.written) / time : 0;
    }
    struct stat file { };
    if (::stat(figures.counts.path.c_str(), &file) == 0)
        figures.fileBytes = static_cast<double>(file.st_size);
    struct statvfs system { };
    if (::statvfs(figures.counts.path.c_str(), &system) == 0)
        figures.freeBytes = static_cast<double>(system.f_bavail) * static_cast<double>(system.f_frsize);
    return figures;
}

void Status::sample()
{
    constexpr std::size_t MOST_SAMPLES = 10;
    const Sample sample {Clock::now(), m_count().written};
    const std::lock_guard lock(m_lock);
    m_samples.push_back(sample);
    if (m_samples.size() > MOST_SAMPLES)
        m_samples.pop_front();
}

} // namespace vxlogd
