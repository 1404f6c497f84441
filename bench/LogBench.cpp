#include "vx/io/FileOutputStream.h"
#include "vx/io/OutputStreamWriter.h"
#include "vx/log/AsyncProcessor.h"
#include "vx/log/BasicLogWriter.h"
#include "vx/log/Logger.h"
#include "vx/log/XmlLogWriter.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#ifdef VX_BENCH_SPDLOG
#include <atomic>
#include <spdlog/async_logger.h>
#include <spdlog/details/thread_pool.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/basic_file_sink.h>
#endif

// Entries of the same length and form, each flushed by itself: to nowhere, which leaves the work on the entry; to the kernel,
// which a dead program does not matter to; or to the disk, which a dead machine does not matter to. On a file system in memory
// the last two are nearly the same.

namespace {

using namespace vx;

constexpr char TEXT[] = "connection 4711 from 192.0.2.17:52814 was closed after 1234 ms";

enum Reach { KERNEL, DISK };

/// A log of its own for each benchmark. Its size proves what was written.
class LogFile {
public:
    LogFile()
        : m_path(std::filesystem::temp_directory_path() / ("vx-log-bench-" + std::to_string(::getpid())))
    {
        std::filesystem::remove(m_path);
    }
    ~LogFile() { std::filesystem::remove(m_path); }
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    std::string path() const { return m_path.string(); }
    void expectEntries(benchmark::State& state, std::int64_t count, const std::string& first) const
    {
        if (std::filesystem::file_size(m_path) != first.size() * static_cast<std::size_t>(count))
            state.SkipWithError("entries are missing");
        state.SetItemsProcessed(count);
    }

private:
    std::filesystem::path m_path;
};

class KernelFile : public io::FileOutputStream {
public:
    using FileOutputStream::FileOutputStream;
    void flush() override { }
};

/// Counts bytes and drops them.
class Count final : public io::OutputStream {
public:
    void write(const signed char*, std::int32_t length) override { m_bytes += length; }
    void flush() override { }
    void close() override { }
    std::int64_t m_bytes = 0;
};

Reference<log::ILogProcessor> writerTo(const LogFile& log, Reach reach)
{
    const String path(log.path());
    constexpr unsigned int TRUNC = io::FileOutputStream::TRUNC;
    Reference<io::OutputStream> file(
        reach == KERNEL ? new KernelFile(path, TRUNC) : new io::FileOutputStream(path, TRUNC));
    return log::BasicLogWriter::create(new io::OutputStreamWriter(file.get(), u"UTF-8", 4096));
}

const std::string& ownEntry()
{
    static const std::string entry = std::string("level=2\ntext=") + TEXT + "\n-------------------------\n";
    return entry;
}

/// An entry with a time stamp, in the form of the locale "C".
std::string stamped(const std::string& entry)
{
    return "timestamp=11/19/26 02:58:01\n" + entry;
}

/// The work on an entry without any system call but those for its time.
void print(benchmark::State& state)
{
    const Reference<Count> count(new Count);
    const Reference<io::Writer> writer(new io::OutputStreamWriter(count.get(), u"UTF-8", 4096));
    const Reference<log::Logger> logger = log::Logger::create();
    logger->addProcessor(state.range(1) != 0 ? log::XmlLogWriter::create(writer.get()).get()
                                             : log::BasicLogWriter::create(writer.get()).get());
    logger->enableField(u"timestamp", state.range(0) != 0);
    const String text(TEXT);
    for (auto _ : state)
        logger->log(2, text);
    if (count->m_bytes < state.iterations() * static_cast<std::int64_t>(ownEntry().size()))
        state.SkipWithError("entries are missing");
}

void sync(benchmark::State& state)
{
    const LogFile log;
    const Reference<log::Logger> logger = log::Logger::create();
    logger->addProcessor(writerTo(log, static_cast<Reach>(state.range(0))).get());
    logger->enableField(u"timestamp", state.range(1) != 0);
    const String text(TEXT);
    for (auto _ : state)
        logger->log(2, text);
    log.expectEntries(state, state.iterations(), state.range(1) != 0 ? stamped(ownEntry()) : ownEntry());
}

/// Counts entries and drops them.
class Drop final : public Object, public log::ILogProcessor {
public:
    VX_OBJECT_UNKNOWN(Object)
    void process(const log::ILogEntry*) override { ++m_count; }
    std::int64_t m_count = 0;
};

void build(benchmark::State& state)
{
    const Reference<log::Logger> logger = log::Logger::create();
    const Reference<Drop> drop(new Drop);
    logger->addProcessor(drop.get());
    const String text(TEXT);
    for (auto _ : state)
        logger->log(2, text);
    if (drop->m_count != state.iterations())
        state.SkipWithError("entries are missing");
}

constexpr int BURST = 4096;

enum Measure { CALLER, WHOLE };

/// Time on the calling thread's processor: another thread that has it meanwhile does not count.
double secondsOfThread()
{
    timespec time;
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Bursts from some threads that find an idle worker: what a caller pays, or all of it until the last entry is in the file.
template <class Log, class Wait>
void timeBursts(benchmark::State& state, Log log, Wait wait)
{
    using Clock = std::chrono::steady_clock;
    const auto burst = [&] {
        for (int count = 0; count < BURST; ++count)
            log();
    };
    for (auto _ : state) {
        const auto start = Clock::now();
        const double before = secondsOfThread();
        std::vector<std::jthread> others;
        for (int thread = 1; thread < state.range(1); ++thread)
            others.emplace_back(burst);
        burst();
        others.clear();
        const double called = secondsOfThread() - before;
        wait();
        const std::chrono::duration<double> whole = Clock::now() - start;
        state.SetIterationTime(state.range(0) == CALLER ? called : whole.count());
    }
}

void async(benchmark::State& state)
{
    const LogFile log;
    const Reference<log::Logger> logger = log::Logger::create();
    const Reference<log::AsyncProcessor> queue = log::AsyncProcessor::create(writerTo(log, KERNEL).get(), 1);
    logger->addProcessor(queue.get());
    const String text(TEXT);
    timeBursts(
        state, [&] { logger->log(2, text); }, [&] { queue->waitUntilDone(); });
    log.expectEntries(state, state.iterations() * BURST * state.range(1), ownEntry());
}

#ifdef VX_BENCH_SPDLOG

constexpr char PATTERN[] = "level=%L\ntext=%v\n-------------------------";
constexpr char STAMPED_PATTERN[] = "timestamp=%D %T\nlevel=%L\ntext=%v\n-------------------------";
constexpr char XML_PATTERN[] = "  <entry>\n    <level> %L </level>\n    <text> %v </text>\n  </entry>";
constexpr char STAMPED_XML_PATTERN[] = "  <entry>\n    <timestamp> %D %T </timestamp>\n    <level> %L </level>\n"
                                       "    <text> %v </text>\n  </entry>";

/// Flushes to the disk when told to, and counts what it flushes.
class PeerSink final : public spdlog::sinks::base_sink<std::mutex> {
public:
    PeerSink(const std::string& path, Reach reach)
        : m_file(std::fopen(path.c_str(), "wb"))
        , m_reach(reach)
    {
        set_pattern(PATTERN);
    }
    ~PeerSink() override { std::fclose(m_file); }

    /// Sleeps, as ours does, until that many entries have been flushed.
    void waitFor(std::int64_t count)
    {
        m_wanted = count;
        for (std::int64_t flushed = m_flushed; flushed < count; flushed = m_flushed)
            m_flushed.wait(flushed);
    }

private:
    void sink_it_(const spdlog::details::log_msg& message) override
    {
        spdlog::memory_buf_t text;
        formatter_->format(message, text);
        std::fwrite(text.data(), 1, text.size(), m_file);
    }
    void flush_() override
    {
        std::fflush(m_file);
        if (m_reach == DISK)
            ::fdatasync(::fileno(m_file));
        if (++m_flushed == m_wanted)
            m_flushed.notify_all();
    }

    std::atomic<std::int64_t> m_flushed {0};
    std::atomic<std::int64_t> m_wanted {0};
    std::FILE* m_file;
    Reach m_reach;
};

const std::string& peerEntry()
{
    static const std::string entry = std::string("level=I\ntext=") + TEXT + "\n-------------------------\n";
    return entry;
}

void syncPeer(benchmark::State& state)
{
    const LogFile log;
    spdlog::sink_ptr sink;
    if (state.range(0) == KERNEL)
        sink = std::make_shared<spdlog::sinks::basic_file_sink_mt>(log.path(), true);
    else
        sink = std::make_shared<PeerSink>(log.path(), DISK);
    spdlog::logger logger("peer", sink);
    logger.set_pattern(state.range(1) != 0 ? STAMPED_PATTERN : PATTERN);
    logger.flush_on(spdlog::level::trace);
    for (auto _ : state)
        logger.info(TEXT);
    log.expectEntries(state, state.iterations(), state.range(1) != 0 ? stamped(peerEntry()) : peerEntry());
}

/// The peer's twin of `print`: each entry takes the form of a file's and is dropped.
void printPeer(benchmark::State& state)
{
    class Sink final : public spdlog::sinks::base_sink<std::mutex> {
    public:
        std::size_t m_bytes = 0;

    private:
        void sink_it_(const spdlog::details::log_msg& message) override
        {
            spdlog::memory_buf_t text;
            formatter_->format(message, text);
            m_bytes += text.size();
        }
        void flush_() override { }
    };
    const auto sink = std::make_shared<Sink>();
    spdlog::logger logger("peer", sink);
    constexpr const char* PATTERNS[2][2] = {{PATTERN, STAMPED_PATTERN}, {XML_PATTERN, STAMPED_XML_PATTERN}};
    logger.set_pattern(PATTERNS[state.range(1)][state.range(0)]);
    logger.flush_on(spdlog::level::trace);
    for (auto _ : state)
        logger.info(TEXT);
    if (sink->m_bytes < static_cast<std::size_t>(state.iterations()) * peerEntry().size())
        state.SkipWithError("entries are missing");
}

/// Counts messages and drops them.
class PeerDrop final : public spdlog::sinks::base_sink<std::mutex> {
public:
    std::int64_t m_count = 0;

private:
    void sink_it_(const spdlog::details::log_msg&) override { ++m_count; }
    void flush_() override { }
};

void buildPeer(benchmark::State& state)
{
    const auto drop = std::make_shared<PeerDrop>();
    spdlog::logger logger("peer", drop);
    for (auto _ : state)
        logger.info(TEXT);
    if (drop->m_count != state.iterations())
        state.SkipWithError("entries are missing");
}

void asyncPeer(benchmark::State& state)
{
    const LogFile log;
    const auto sink = std::make_shared<PeerSink>(log.path(), KERNEL);
    const auto pool = std::make_shared<spdlog::details::thread_pool>(2 * BURST, 1);
    const auto logger
        = std::make_shared<spdlog::async_logger>("peer", sink, pool, spdlog::async_overflow_policy::block);
    logger->flush_on(spdlog::level::trace);
    std::int64_t wanted = 0;
    timeBursts(
        state, [&] { logger->info(TEXT); },
        [&] {
            wanted += BURST * state.range(1);
            sink->waitFor(wanted);
        });
    log.expectEntries(state, state.iterations() * BURST * state.range(1), peerEntry());
}

#endif

void printCases(benchmark::internal::Benchmark* bench)
{
    bench->ArgNames({"stamped", "xml"})->ArgsProduct({{0, 1}, {0, 1}});
}

void syncCases(benchmark::internal::Benchmark* bench)
{
    bench->ArgNames({"disk", "stamped"})->Args({KERNEL, 0})->Args({KERNEL, 1})->Args({DISK, 0});
}

void asyncCases(benchmark::internal::Benchmark* bench)
{
    bench->ArgNames({"whole", "threads"})->Args({CALLER, 1})->Args({WHOLE, 1})->Args({WHOLE, 4})->UseManualTime();
}

BENCHMARK(print)->Apply(printCases);
BENCHMARK(sync)->Apply(syncCases);
BENCHMARK(build);
BENCHMARK(async)->Apply(asyncCases);
#ifdef VX_BENCH_SPDLOG
BENCHMARK(printPeer)->Apply(printCases);
BENCHMARK(syncPeer)->Apply(syncCases);
BENCHMARK(buildPeer);
BENCHMARK(asyncPeer)->Apply(asyncCases);
#endif

} // namespace
