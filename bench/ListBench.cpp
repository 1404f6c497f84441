#include "vx/collections/List.h"
#include "vx/collections/vorb/ArrayList.h"
#include "vx/collections/vorb/LinkedList.h"

#include <benchmark/benchmark.h>

#include <list>
#include <memory>
#include <thread>
#include <vector>

// Lists of counted objects, beside the containers of the standard library with shared pointers. As in the services that
// use these lists there is more than one thread, so that all counts are atomic.

namespace {

using namespace vx;
namespace vorb = collections::vorb;

class Item : public Object {
public:
    explicit Item(int value)
        : m_value(value)
    {
    }
    int getValue() const { return m_value; }

private:
    int m_value;
};

struct PlainItem {
    virtual ~PlainItem() = default;
    int value = 0;
};

const bool g_threaded = [] {
    std::thread([] {}).join();
    return true;
}();

const Reference<Item>& oneItem()
{
    static const Reference<Item> item(new Item(1));
    return item;
}

template <class ListClass>
Reference<ListClass> listOf(std::int64_t size)
{
    Reference<ListClass> list(new ListClass);
    for (std::int64_t i = 0; i < size; ++i)
        list->add((new Item(static_cast<int>(i)))->GetUnknown());
    return list;
}

template <class Container>
Container standardOf(std::int64_t size)
{
    Container container;
    for (std::int64_t i = 0; i < size; ++i) {
        container.push_back(std::make_shared<PlainItem>());
        container.back()->value = static_cast<int>(i);
    }
    return container;
}

void count(benchmark::State& state, bool right)
{
    if (!right)
        state.SkipWithError("wrong result");
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class ListClass>
void appendOne(benchmark::State& state)
{
    IVXUnknown* element = oneItem()->GetUnknown();
    bool right = true;
    for (auto _ : state) {
        ListClass list;
        for (std::int64_t i = 0; i < state.range(0); ++i)
            list.add(element);
        right = right && list.getSize() == state.range(0);
    }
    count(state, right);
}

template <class Container>
void appendOneStandard(benchmark::State& state)
{
    const auto element = std::make_shared<PlainItem>();
    bool right = true;
    for (auto _ : state) {
        Container container;
        for (std::int64_t i = 0; i < state.range(0); ++i)
            container.push_back(element);
        right = right && static_cast<std::int64_t>(container.size()) == state.range(0);
    }
    count(state, right);
}

template <class ListClass>
void appendNew(benchmark::State& state)
{
    bool right = true;
    for (auto _ : state)
        right = right && listOf<ListClass>(state.range(0))->getSize() == state.range(0);
    count(state, right);
}

template <class Container>
void appendNewStandard(benchmark::State& state)
{
    bool right = true;
    for (auto _ : state)
        right = right && static_cast<std::int64_t>(standardOf<Container>(state.range(0)).size()) == state.range(0);
    count(state, right);
}

std::int64_t sumTo(std::int64_t size)
{
    return size * (size - 1) / 2;
}

template <class ListClass>
void walkByIterator(benchmark::State& state)
{
    const auto list = listOf<ListClass>(state.range(0));
    std::int64_t sum = 0;
    for (auto _ : state) {
        sum = 0;
        const Reference<vorb::ConstIterator> elements = list->createConstIterator();
        while (elements->hasNext())
            sum += static_cast<Item*>(static_cast<ComObject*>(elements->next().get()))->getValue();
    }
    count(state, sum == sumTo(state.range(0)));
}

template <class ListClass>
void walkTyped(benchmark::State& state)
{
    const collections::List<Item> list(listOf<ListClass>(state.range(0)).get());
    std::int64_t sum = 0;
    for (auto _ : state) {
        sum = 0;
        for (const auto& element : list)
            sum += element->getValue();
    }
    count(state, sum == sumTo(state.range(0)));
}

template <class ListClass>
void walkLooking(benchmark::State& state)
{
    const auto list = listOf<ListClass>(state.range(0));
    std::int64_t sum = 0;
    for (auto _ : state) {
        sum = 0;
        for (IVXUnknown* element : *list)
            sum += static_cast<Item*>(static_cast<ComObject*>(element))->getValue();
    }
    count(state, sum == sumTo(state.range(0)));
}

/// Each element held while it is looked at, as our iterators do.
template <class Container>
void walkHoldingStandard(benchmark::State& state)
{
    const auto container = standardOf<Container>(state.range(0));
    std::int64_t sum = 0;
    for (auto _ : state) {
        sum = 0;
        for (const auto& element : container) {
            const std::shared_ptr<PlainItem> held = element;
            sum += held->value;
        }
    }
    count(state, sum == sumTo(state.range(0)));
}

template <class Container>
void walkLookingStandard(benchmark::State& state)
{
    const auto container = standardOf<Container>(state.range(0));
    std::int64_t sum = 0;
    for (auto _ : state) {
        sum = 0;
        for (const auto& element : container)
            sum += element->value;
    }
    count(state, sum == sumTo(state.range(0)));
}

using Pointers = std::vector<std::shared_ptr<PlainItem>>;
using LinkedPointers = std::list<std::shared_ptr<PlainItem>>;
constexpr std::int64_t MILLION = 1'000'000;

BENCHMARK(appendOne<vorb::ArrayList>)->Arg(MILLION)->Unit(benchmark::kMillisecond);
BENCHMARK(appendOneStandard<Pointers>)->Arg(MILLION)->Unit(benchmark::kMillisecond);
BENCHMARK(appendNew<vorb::ArrayList>)->Arg(MILLION)->Unit(benchmark::kMillisecond);
BENCHMARK(appendNewStandard<Pointers>)->Arg(MILLION)->Unit(benchmark::kMillisecond);
BENCHMARK(walkLooking<vorb::ArrayList>)->Arg(MILLION)->Unit(benchmark::kMillisecond);
BENCHMARK(walkByIterator<vorb::ArrayList>)->Arg(MILLION)->Unit(benchmark::kMillisecond);
BENCHMARK(walkTyped<vorb::ArrayList>)->Arg(MILLION)->Unit(benchmark::kMillisecond);
BENCHMARK(walkHoldingStandard<Pointers>)->Arg(MILLION)->Unit(benchmark::kMillisecond);
BENCHMARK(walkLookingStandard<Pointers>)->Arg(MILLION)->Unit(benchmark::kMillisecond);
BENCHMARK(appendOne<vorb::LinkedList>)->Arg(MILLION)->Unit(benchmark::kMillisecond);
BENCHMARK(appendOneStandard<LinkedPointers>)->Arg(MILLION)->Unit(benchmark::kMillisecond);
BENCHMARK(walkByIterator<vorb::LinkedList>)->Arg(MILLION)->Unit(benchmark::kMillisecond);
BENCHMARK(walkHoldingStandard<LinkedPointers>)->Arg(MILLION)->Unit(benchmark::kMillisecond);

} // namespace
