#include "vx/String.h"
#include "vx/collections/vorb/ArrayList.h"
#include "vx/collections/vorb/HashMap.h"
#include "vx/collections/vorb/LinkedList.h"
#include "vx/log/AsyncProcessor.h"
#include "vx/log/Logger.h"

#include <benchmark/benchmark.h>

#ifdef VX_BENCH_QT
#include <QHash>
#include <QSharedPointer>
#include <QString>
#endif
#ifdef VX_BENCH_ABSL
#include <absl/container/flat_hash_map.h>
#endif
#ifdef VX_BENCH_SPDLOG
#include <spdlog/async_logger.h>
#include <spdlog/details/thread_pool.h>
#include <spdlog/sinks/base_sink.h>
#endif

#include <list>
#include <malloc.h>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

// Bytes that the allocator of the C runtime gives out for each text, element or entry, with what the allocator needs for
// itself. The counter "bytes" is the result; the time means nothing.

namespace {

using namespace vx;
namespace vorb = collections::vorb;

constexpr int COUNT = 10'000;

std::size_t bytesInUse()
{
    const struct mallinfo2 all = ::mallinfo2();
    return all.uordblks + all.hblkhd;
}

/// `make` returns what owns everything that it made.
template <class Make>
void measure(benchmark::State& state, Make make)
{
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::size_t before = bytesInUse();
        const auto owner = make();
        bytes = bytesInUse() - before;
    }
    state.counters["bytes"] = static_cast<double>(bytes) / COUNT;
}

std::u16string units(int length, int number)
{
    const std::string digits = std::to_string(number);
    std::u16string text(static_cast<std::size_t>(length), u'x');
    std::copy(digits.begin(), digits.end(), text.begin());
    return text;
}

struct Ours {
    using Text = String;

    static Text text(const std::u16string& source) { return String(source); }
    static auto list()
    {
        Reference<vorb::ArrayList> list(new vorb::ArrayList);
        for (int count = 0; count < COUNT; ++count)
            list->add((new Object)->GetUnknown());
        return list;
    }
    static auto linkedList()
    {
        Reference<vorb::LinkedList> list(new vorb::LinkedList);
        for (int count = 0; count < COUNT; ++count)
            list->add((new Object)->GetUnknown());
        return list;
    }
    static auto map()
    {
        Reference<vorb::HashMap> map(new vorb::HashMap);
        for (int number = 0; number < COUNT; ++number)
            map->put((new String(units(20, number)))->GetUnknown(), (new Object)->GetUnknown());
        return map;
    }
};

struct Thing {
    virtual ~Thing() = default;
    std::uint64_t field = 0;
};

template <class Map, class Key, class MakeValue>
std::unique_ptr<Map> filled(Key key, MakeValue makeValue)
{
    auto map = std::make_unique<Map>();
    for (int number = 0; number < COUNT; ++number)
        (*map)[key(units(20, number))] = makeValue();
    return map;
}

struct Std {
    using Text = std::u16string;

    static Text text(const std::u16string& source) { return Text(source.data(), source.size()); }
    template <class Container>
    static std::unique_ptr<Container> container()
    {
        auto container = std::make_unique<Container>();
        for (int count = 0; count < COUNT; ++count)
            container->push_back(std::make_shared<Thing>());
        return container;
    }
    static auto list() { return container<std::vector<std::shared_ptr<Thing>>>(); }
    static auto linkedList() { return container<std::list<std::shared_ptr<Thing>>>(); }
    static auto map()
    {
        return filled<std::unordered_map<Text, std::shared_ptr<Thing>>>(text, std::make_shared<Thing>);
    }
};

template <class Side>
void text(benchmark::State& state)
{
    measure(state, [&] {
        std::vector<typename Side::Text> texts;
        texts.reserve(COUNT);
        for (int number = 0; number < COUNT; ++number)
            texts.push_back(Side::text(units(static_cast<int>(state.range(0)), number)));
        return texts;
    });
}

template <class Side>
void listElement(benchmark::State& state)
{
    measure(state, [] { return Side::list(); });
}

template <class Side>
void linkedListElement(benchmark::State& state)
{
    measure(state, [] { return Side::linkedList(); });
}

template <class Side>
void mapEntry(benchmark::State& state)
{
    measure(state, [] { return Side::map(); });
}

BENCHMARK(text<Ours>)->Arg(8)->Arg(20)->Arg(60)->Iterations(1);
BENCHMARK(text<Std>)->Arg(8)->Arg(20)->Arg(60)->Iterations(1);
BENCHMARK(listElement<Ours>)->Iterations(1);
BENCHMARK(listElement<Std>)->Iterations(1);
BENCHMARK(linkedListElement<Ours>)->Iterations(1);
BENCHMARK(linkedListElement<Std>)->Iterations(1);
BENCHMARK(mapEntry<Ours>)->Iterations(1);
BENCHMARK(mapEntry<Std>)->Iterations(1);

#ifdef VX_BENCH_QT
struct Qt5 {
    using Text = QString;

    static Text text(const std::u16string& source) { return QString::fromStdU16String(source); }
    static auto map()
    {
        return filled<QHash<QString, QSharedPointer<Thing>>>(text, [] { return QSharedPointer<Thing>::create(); });
    }
};

BENCHMARK(text<Qt5>)->Arg(8)->Arg(20)->Arg(60)->Iterations(1);
BENCHMARK(mapEntry<Qt5>)->Iterations(1);
#endif

#ifdef VX_BENCH_ABSL
struct Absl {
    static auto map()
    {
        return filled<absl::flat_hash_map<std::u16string, std::shared_ptr<Thing>>>(Std::text, std::make_shared<Thing>);
    }
};

BENCHMARK(mapEntry<Absl>)->Iterations(1);
#endif

constexpr char ENTRY[] = "connection 4711 from 192.0.2.17:52814 was closed after 1234 ms";

/// Does not go on before the mutex is free.
class Blocked final : public Object, public log::ILogProcessor {
public:
    explicit Blocked(std::mutex& mutex)
        : m_mutex(mutex)
    {
    }
    VX_OBJECT_UNKNOWN(Object)
    void process(const log::ILogEntry*) override { const std::lock_guard guard(m_mutex); }

private:
    std::mutex& m_mutex;
};

void queuedEntry(benchmark::State& state)
{
    std::mutex mutex;
    const Reference<log::Logger> logger = log::Logger::create();
    const String text(ENTRY);
    std::unique_lock lock(mutex);
    measure(state, [&] {
        const Reference<log::AsyncProcessor> queue = log::AsyncProcessor::create(new Blocked(mutex), 1);
        logger->addProcessor(queue.get());
        for (int count = 0; count < COUNT; ++count)
            logger->log(2, text);
        return std::shared_ptr<void>(nullptr, [&lock, queue](void*) { lock.unlock(); });
    });
}
BENCHMARK(queuedEntry)->Iterations(1);

#ifdef VX_BENCH_SPDLOG
class BlockedSink final : public spdlog::sinks::base_sink<std::mutex> {
public:
    explicit BlockedSink(std::mutex& mutex)
        : m_mutex(mutex)
    {
    }

private:
    void sink_it_(const spdlog::details::log_msg&) override { const std::lock_guard guard(m_mutex); }
    void flush_() override { }

    std::mutex& m_mutex;
};

void queuedEntryPeer(benchmark::State& state)
{
    std::mutex mutex;
    std::unique_lock lock(mutex);
    measure(state, [&] {
        const auto pool = std::make_shared<spdlog::details::thread_pool>(COUNT, 1);
        const auto logger = std::make_shared<spdlog::async_logger>("peer", std::make_shared<BlockedSink>(mutex), pool);
        for (int count = 0; count < COUNT; ++count)
            logger->info(ENTRY);
        return std::shared_ptr<void>(nullptr, [&lock, pool, logger](void*) { lock.unlock(); });
    });
}
BENCHMARK(queuedEntryPeer)->Iterations(1);
#endif

} // namespace
