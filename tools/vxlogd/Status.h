#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

namespace vxlogd {

/// What the forwarding of the log counts.
struct ForwardCounts {
    std::uint64_t forwarded; ///< lines since the start
    std::uint64_t refused; ///< lines that the brokers will never take
    std::uint64_t lostFiles; ///< older files of the log that were removed before they were forwarded
    std::int64_t waitingBytes; ///< of the log that the brokers do not have yet
    std::size_t waitingLines; ///< that are acknowledged when the brokers have them
    std::string trouble; ///< why lines have to wait; empty if they do not
    std::string target;
};

/// What the parts of the server count.
struct Counts {
    std::size_t connections; ///< at the moment
    std::uint64_t accepted; ///< connections since the start
    std::uint64_t turnedAway; ///< connections beyond the limit
    std::uint64_t written; ///< lines
    std::uint64_t lost; ///< lines that were received and could not be written
    std::size_t queuedLines; ///< received and not in the log yet
    std::size_t queuedBytes; ///< their memory
    std::string trouble; ///< why the log cannot be written; empty if it can
    std::string path; ///< of the log
    std::optional<ForwardCounts> forward {};
};

/// The state of the server at one moment.
struct Figures {
    Counts counts;
    double uptime; ///< in seconds
    double linesPerSecond; ///< of the last seconds
    double fileBytes; ///< size of the log; negative if it is unknown, as the next one
    double freeBytes; ///< on the file system of the log, for the user of the server
};

/// One figure on each line, for people.
std::string toText(const Figures& figures);
/// The text format of Prometheus, version 0.0.4.
std::string toMetrics(const Figures& figures);
/// An object of JSON with the names of the metrics.
std::string toJson(const Figures& figures);

/// Gathers the figures of a server. Any thread may call it.
class Status {
public:
    using Clock = std::chrono::steady_clock;

    explicit Status(std::function<Counts()> count);

    Figures gather();
    /// Call this about once a second: the rate of lines is measured between these moments.
    void sample();

private:
    struct Sample {
        Clock::time_point time;
        std::uint64_t written;
    };

    const std::function<Counts()> m_count;
    const Clock::time_point m_start = Clock::now();
    std::mutex m_lock;
    std::deque<Sample> m_samples;
};

} // namespace vxlogd
