#include "vx/String.h"
#include "vx/collections/vorb/HashMap.h"
#include "vx/collections/vorb/MapEntry.h"

#include <benchmark/benchmark.h>

#ifdef VX_BENCH_QT
#include <QHash>
#include <QSharedPointer>
#include <QString>
#endif
#ifdef VX_BENCH_ABSL
#include <absl/container/flat_hash_map.h>
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

// `HashMap` with text as keys beside `std::unordered_map` of counted texts. Both look up by equal keys that are other
// objects than those in the map, and both hand out values with a count of their own.

namespace {

using namespace vx;
using collections::vorb::HashMap;
using collections::vorb::MapEntry;

constexpr int KEYS = 100'000;

/// Services have threads, and `std::shared_ptr` counts without atomic instructions in a process that never had one.
[[maybe_unused]] const bool g_hadThreads = (std::thread([] {}).join(), true);

std::u16string textOf(int number)
{
    const std::string text = "session/" + std::to_string(number * 7919LL) + "/name";
    return {text.begin(), text.end()};
}

/// In the order in which the map was filled, or shuffled, so that each look-up lands somewhere else in memory.
std::vector<int> numbers(bool isShuffled)
{
    std::vector<int> result(KEYS);
    for (int number = 0; number < KEYS; ++number)
        result[static_cast<std::size_t>(number)] = number;
    if (isShuffled)
        std::shuffle(result.begin(), result.end(), std::mt19937(1));
    return result;
}

struct Ours {
    using Key = Reference<String>;
    using Value = Reference<Object>;
    using Map = HashMap;

    static Key newKey(int number) { return new String(textOf(number)); }
    static Value newValue() { return new Object; }
    static Reference<Map> newMap() { return new HashMap; }
    static void put(Map& map, const Key& key, const Value& value) { map.put(key->GetUnknown(), value->GetUnknown()); }
    static bool get(const Map& map, const Key& key) { return map.get(key->GetUnknown()) != nullptr; }
    static bool remove(Map& map, const Key& key) { return map.remove(key->GetUnknown()) != nullptr; }
    static std::uintptr_t iterate(const Map& map)
    {
        std::uintptr_t sum = 0;
        for (const auto [key, value] : map)
            sum += reinterpret_cast<std::uintptr_t>(key) ^ reinterpret_cast<std::uintptr_t>(value);
        return sum;
    }
    static int iterateCounted(const Map& map)
    {
        int count = 0;
        const auto entries = map.createEntrySet()->createConstIterator();
        while (entries->hasNext()) {
            const Reference<MapEntry> entry = MapEntry::of(entries->next());
            count += entry->getKey() != nullptr && entry->getValue() != nullptr ? 1 : 0;
        }
        return count;
    }
};

/// Keys of 208 units that all have one hash, as an attacker would choose them: beside a tree, which has no hash.
struct Colliding : Ours {
    static std::u16string text(int number)
    {
        std::u16string units(208, u'x'); // the hash looks at every sixth one
        for (std::size_t place = 1; place < 6; ++place, number /= 10)
            units[place] = static_cast<char16_t>(u'0' + number % 10);
        return units;
    }
    static Key newKey(int number) { return new String(text(number)); }
};

struct Peer {
    struct Thing {
        virtual ~Thing() = default;
        std::uint64_t field = 0;
    };
    using Key = std::shared_ptr<const std::u16string>;
    using Value = std::shared_ptr<Thing>;
    struct Hash { // not `noexcept`, so that the map keeps the hashes
        std::size_t operator()(const Key& key) const { return std::hash<std::u16string>()(*key); }
    };
    struct Equal {
        bool operator()(const Key& left, const Key& right) const { return *left == *right; }
    };
    using Map = std::unordered_map<Key, Value, Hash, Equal>;

    static Key newKey(int number) { return std::make_shared<const std::u16string>(textOf(number)); }
    static Value newValue() { return std::make_shared<Thing>(); }
    static std::unique_ptr<Map> newMap() { return std::make_unique<Map>(); }
    template <class AnyMap>
    static void put(AnyMap& map, const Key& key, const Value& value)
    {
        map.insert_or_assign(key, value);
    }
    template <class AnyMap>
    static bool get(const AnyMap& map, const Key& key)
    {
        const auto found = map.find(key);
        const Value value = found != map.end() ? found->second : nullptr;
        return value != nullptr;
    }
    template <class AnyMap>
    static bool remove(AnyMap& map, const Key& key)
    {
        const auto found = map.find(key);
        if (found == map.end())
            return false;
        const Value value = std::move(found->second);
        map.erase(found);
        return value != nullptr;
    }
    template <class AnyMap>
    static std::uintptr_t iterate(const AnyMap& map)
    {
        std::uintptr_t sum = 0;
        for (const auto& [key, value] : map)
            sum += reinterpret_cast<std::uintptr_t>(key.get()) ^ reinterpret_cast<std::uintptr_t>(value.get());
        return sum;
    }
    static int iterateCounted(const Map& map)
    {
        int count = 0;
        for (const auto& entry : map) {
            const Key key = entry.first;
            const Value value = entry.second;
            count += key != nullptr && value != nullptr ? 1 : 0;
        }
        return count;
    }
};

#ifdef VX_BENCH_ABSL
struct Absl : Peer {
    using Map = absl::flat_hash_map<Key, Value, Hash, Equal>;

    static std::unique_ptr<Map> newMap() { return std::make_unique<Map>(); }
};
#endif

#ifdef VX_BENCH_QT
struct Qt5 {
    using Key = QString;
    using Value = QSharedPointer<Peer::Thing>;
    using Map = QHash<Key, Value>;

    static Key newKey(int number) { return QString::fromStdU16String(textOf(number)); }
    static Value newValue() { return Value::create(); }
    static std::unique_ptr<Map> newMap() { return std::make_unique<Map>(); }
    static void put(Map& map, const Key& key, const Value& value) { map.insert(key, value); }
    static bool get(const Map& map, const Key& key) { return !map.value(key).isNull(); }
    static bool remove(Map& map, const Key& key) { return !map.take(key).isNull(); }
};
#endif

struct Tree : Peer {
    struct Less {
        bool operator()(const Key& left, const Key& right) const { return *left < *right; }
    };
    using Map = std::map<Key, Value, Less>;

    static Key newKey(int number) { return std::make_shared<const std::u16string>(Colliding::text(number)); }
    static std::unique_ptr<Map> newMap() { return std::make_unique<Map>(); }
};

/// Keys and values in the order of filling, and the keys to look up by.
template <class Side>
struct Data {
    explicit Data(bool isShuffled)
    {
        for (int number = 0; number < KEYS; ++number) {
            keys.push_back(Side::newKey(number));
            values.push_back(Side::newValue());
        }
        for (const int number : numbers(isShuffled))
            wanted.push_back(Side::newKey(number));
    }

    auto filledMap() const
    {
        auto map = Side::newMap();
        for (std::size_t index = 0; index < keys.size(); ++index)
            Side::put(*map, keys[index], values[index]);
        return map;
    }

    std::vector<typename Side::Key> keys;
    std::vector<typename Side::Value> values;
    std::vector<typename Side::Key> wanted;
};

template <class Side>
void put(benchmark::State& state)
{
    const Data<Side> data(false);
    for (auto _ : state) {
        auto map = data.filledMap();
        benchmark::DoNotOptimize(map);
        state.PauseTiming();
        map = nullptr;
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * KEYS);
}

template <class Side>
void get(benchmark::State& state)
{
    const Data<Side> data(state.range(0) != 0);
    const auto map = data.filledMap();
    for (auto _ : state) {
        int found = 0;
        for (const auto& key : data.wanted)
            found += Side::get(*map, key) ? 1 : 0;
        if (found != KEYS)
            state.SkipWithError("a key is missing");
    }
    state.SetItemsProcessed(state.iterations() * KEYS);
}

template <class Side>
void iterate(benchmark::State& state)
{
    const Data<Side> data(false);
    const auto map = data.filledMap();
    std::uintptr_t expected = 0;
    for (std::size_t index = 0; index < data.keys.size(); ++index)
        expected += reinterpret_cast<std::uintptr_t>(data.keys[index].get())
            ^ reinterpret_cast<std::uintptr_t>(data.values[index].get());
    for (auto _ : state) {
        if (Side::iterate(*map) != expected)
            state.SkipWithError("an entry is missing");
    }
    state.SetItemsProcessed(state.iterations() * KEYS);
}

/// As by the interface, which counts the entry, the key and the value for the caller.
template <class Side>
void iterateCounted(benchmark::State& state)
{
    const Data<Side> data(false);
    const auto map = data.filledMap();
    for (auto _ : state) {
        if (Side::iterateCounted(*map) != KEYS)
            state.SkipWithError("an entry is missing");
    }
    state.SetItemsProcessed(state.iterations() * KEYS);
}

template <class Side>
void remove(benchmark::State& state)
{
    const Data<Side> data(state.range(0) != 0);
    for (auto _ : state) {
        state.PauseTiming();
        auto map = data.filledMap();
        state.ResumeTiming();
        int removed = 0;
        for (const auto& key : data.wanted)
            removed += Side::remove(*map, key) ? 1 : 0;
        if (removed != KEYS)
            state.SkipWithError("a key is missing");
        state.PauseTiming();
        map = nullptr;
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * KEYS);
}

BENCHMARK(put<Ours>)->Unit(benchmark::kMillisecond);
BENCHMARK(put<Peer>)->Unit(benchmark::kMillisecond);
BENCHMARK(put<Colliding>)->Unit(benchmark::kMillisecond);
BENCHMARK(put<Tree>)->Unit(benchmark::kMillisecond);
BENCHMARK(get<Ours>)->ArgName("shuffled")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(get<Peer>)->ArgName("shuffled")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(get<Colliding>)->ArgName("shuffled")->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(get<Tree>)->ArgName("shuffled")->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(iterate<Ours>)->Unit(benchmark::kMillisecond);
BENCHMARK(iterate<Peer>)->Unit(benchmark::kMillisecond);
BENCHMARK(iterate<Colliding>)->Unit(benchmark::kMillisecond);
BENCHMARK(iterate<Tree>)->Unit(benchmark::kMillisecond);
BENCHMARK(iterateCounted<Ours>)->Unit(benchmark::kMillisecond);
BENCHMARK(iterateCounted<Peer>)->Unit(benchmark::kMillisecond);
BENCHMARK(remove<Ours>)->ArgName("shuffled")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(remove<Peer>)->ArgName("shuffled")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(remove<Colliding>)->ArgName("shuffled")->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(remove<Tree>)->ArgName("shuffled")->Arg(1)->Unit(benchmark::kMillisecond);

#ifdef VX_BENCH_ABSL
BENCHMARK(put<Absl>)->Unit(benchmark::kMillisecond);
BENCHMARK(get<Absl>)->ArgName("shuffled")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(iterate<Absl>)->Unit(benchmark::kMillisecond);
BENCHMARK(remove<Absl>)->ArgName("shuffled")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
#endif
#ifdef VX_BENCH_QT
BENCHMARK(put<Qt5>)->Unit(benchmark::kMillisecond);
BENCHMARK(get<Qt5>)->ArgName("shuffled")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(remove<Qt5>)->ArgName("shuffled")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
#endif

} // namespace
