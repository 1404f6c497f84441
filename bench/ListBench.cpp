#include "vx/NumberBoxes.h"
#include "vx/String.h"
#include "vx/collections/List.h"
#include "vx/collections/vorb/ArrayList.h"
#include "vx/collections/vorb/HashSet.h"
#include "vx/collections/vorb/LinkedList.h"

#include <benchmark/benchmark.h>

#ifdef VX_BENCH_QT
#include <QList>
#include <QSet>
#include <QSharedPointer>
#include <QString>
#endif

#include <algorithm>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
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

/// Appends one element again and again.
template <class Container, class Element>
void append(benchmark::State& state, const Element& element)
{
    constexpr bool IS_OURS = std::is_base_of_v<vorb::List, Container>;
    bool right = true;
    for (auto _ : state) {
        Container container;
        for (std::int64_t i = 0; i < state.range(0); ++i) {
            if constexpr (IS_OURS)
                container.add(element);
            else
                container.push_back(element);
        }
        if constexpr (IS_OURS)
            right = right && container.getSize() == state.range(0);
        else
            right = right && static_cast<std::int64_t>(container.size()) == state.range(0);
    }
    count(state, right);
}

template <class ListClass>
void appendOne(benchmark::State& state)
{
    append<ListClass>(state, oneItem()->GetUnknown());
}

template <class Container>
void appendOneStandard(benchmark::State& state)
{
    append<Container>(state, std::make_shared<PlainItem>());
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

template <class Sum>
void walk(benchmark::State& state, Sum sumOf)
{
    const std::int64_t size = state.range(0);
    std::int64_t sum = 0;
    for (auto _ : state)
        sum = sumOf();
    count(state, sum == size * (size - 1) / 2);
}

template <class Range, class ValueOf>
void walkRange(benchmark::State& state, const Range& range, ValueOf valueOf)
{
    walk(state, [&] {
        std::int64_t sum = 0;
        for (const auto& element : range)
            sum += valueOf(element);
        return sum;
    });
}

int valueOf(IVXUnknown* element)
{
    return static_cast<Item*>(static_cast<ComObject*>(element))->getValue();
}

template <class ListClass>
void walkByIterator(benchmark::State& state)
{
    const auto list = listOf<ListClass>(state.range(0));
    walk(state, [&] {
        std::int64_t sum = 0;
        const Reference<vorb::ConstIterator> elements = list->createConstIterator();
        while (elements->hasNext())
            sum += valueOf(elements->next().get());
        return sum;
    });
}

template <class ListClass>
void walkTyped(benchmark::State& state)
{
    const collections::List<Item> list(listOf<ListClass>(state.range(0)).get());
    walkRange(state, list, [](const auto& element) { return element->getValue(); });
}

template <class ListClass>
void walkLooking(benchmark::State& state)
{
    walkRange(state, *listOf<ListClass>(state.range(0)).get(), valueOf);
}

/// Each element held while it is looked at, as our iterators do.
template <class Container>
void walkHoldingStandard(benchmark::State& state)
{
    walkRange(state, standardOf<Container>(state.range(0)), [](const auto& element) {
        const std::shared_ptr<PlainItem> held = element;
        return held->value;
    });
}

template <class Container>
void walkLookingStandard(benchmark::State& state)
{
    walkRange(state, standardOf<Container>(state.range(0)), [](const auto& element) { return element->value; });
}

std::u16string nameOf(std::int64_t number)
{
    const std::string text = "session/" + std::to_string(number) + "/name";
    return {text.begin(), text.end()};
}

/// A new element, and for a value another one that is equal to it.
template <class Element>
Reference<Element> elementOf(std::int64_t number)
{
    if constexpr (std::is_same_v<Element, String>)
        return new String(nameOf(number));
    else
        return new Element(static_cast<int>(number));
}

/// The last element of the list, which is looked for by an equal one; an `Item` is equal to itself only.
template <class ListClass, class Element>
void indexOf(benchmark::State& state)
{
    const Reference<ListClass> list(new ListClass);
    Reference<Element> last;
    for (std::int64_t number = 0; number < state.range(0); ++number)
        list->add((last = elementOf<Element>(number))->GetUnknown());
    const Reference<Element> wanted = std::is_same_v<Element, Item> ? last : elementOf<Element>(state.range(0) - 1);
    bool right = true;
    for (auto _ : state)
        right = list->indexOf(wanted->GetUnknown()) == state.range(0) - 1 && right;
    count(state, right);
}

/// Removes the middle element and adds it at the end.
template <class ListClass>
void removeByValue(benchmark::State& state)
{
    const Reference<ListClass> list(new ListClass);
    for (std::int64_t number = 0; number < state.range(0); ++number)
        list->add(elementOf<String>(number)->GetUnknown());
    bool right = true;
    for (auto _ : state) {
        const Reference<IVXUnknown> middle = list->get(static_cast<int>(state.range(0) / 2));
        right = list->remove(middle.get()) && list->add(middle.get()) && right;
    }
    count(state, right);
}

/// Puts as many elements into the middle of a list, and removes them.
void addAllInTheMiddle(benchmark::State& state)
{
    const auto size = static_cast<int>(state.range(0));
    const auto list = listOf<vorb::ArrayList>(size);
    const auto more = listOf<vorb::ArrayList>(size);
    bool right = true;
    for (auto _ : state) {
        right = list->addAll(size / 2, *more) && list->getSize() == 2 * size && right;
        list->createSubList(size / 2, size / 2 + size)->clear();
        right = list->getSize() == size && right;
    }
    count(state, right);
}

/// Keeps every second element.
template <class Element>
void retainAll(benchmark::State& state)
{
    const Reference<vorb::ArrayList> all(new vorb::ArrayList);
    vorb::HashSet half;
    for (std::int64_t number = 0; number < state.range(0); ++number) {
        const Reference<Element> element = elementOf<Element>(number);
        all->add(element->GetUnknown());
        if (number % 2 == 0)
            half.add(element->GetUnknown());
    }
    bool right = true;
    for (auto _ : state) {
        const Reference<vorb::ArrayList> list(new vorb::ArrayList(*all));
        right = list->retainAll(half) && list->getSize() == half.getSize() && right;
    }
    count(state, right);
}

#ifdef VX_BENCH_QT
QString textQt(std::int64_t number)
{
    return QString::fromStdU16String(nameOf(number));
}

QList<QString> textsQt(std::int64_t size)
{
    QList<QString> list;
    for (std::int64_t number = 0; number < size; ++number)
        list.append(textQt(number));
    return list;
}

template <class Element>
void indexOfQt(benchmark::State& state, const QList<Element>& list, const Element wanted)
{
    bool right = true;
    for (auto _ : state)
        right = list.indexOf(wanted) == state.range(0) - 1 && right;
    count(state, right);
}

void indexOfTextQt(benchmark::State& state)
{
    indexOfQt(state, textsQt(state.range(0)), textQt(state.range(0) - 1));
}

void indexOfObjectQt(benchmark::State& state)
{
    QList<QSharedPointer<PlainItem>> list;
    for (std::int64_t number = 0; number < state.range(0); ++number)
        list.append(QSharedPointer<PlainItem>::create());
    indexOfQt(state, list, list.back());
}

void retainAllTextQt(benchmark::State& state)
{
    const QList<QString> all = textsQt(state.range(0));
    QSet<QString> half;
    for (int index = 0; index < all.size(); index += 2)
        half.insert(all[index]);
    bool right = true;
    for (auto _ : state) {
        QList<QString> list = all;
        const auto isForeign = [&](const QString& text) { return !half.contains(text); };
        list.erase(std::remove_if(list.begin(), list.end(), isForeign), list.end());
        right = list.size() == half.size() && right;
    }
    count(state, right);
}

void removeByValueQt(benchmark::State& state)
{
    QList<QString> list = textsQt(state.range(0));
    bool right = true;
    for (auto _ : state) {
        const QString middle = list.at(static_cast<int>(state.range(0) / 2));
        right = list.removeOne(middle) && right;
        list.append(middle);
    }
    count(state, right);
}
#endif

void addAllInTheMiddleStandard(benchmark::State& state)
{
    const auto size = state.range(0);
    auto list = standardOf<std::vector<std::shared_ptr<PlainItem>>>(size);
    const auto more = list;
    bool right = true;
    for (auto _ : state) {
        list.insert(list.begin() + size / 2, more.begin(), more.end());
        list.erase(list.begin() + size / 2, list.begin() + size / 2 + size);
        right = static_cast<std::int64_t>(list.size()) == size && right;
    }
    count(state, right);
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

constexpr std::int64_t THOUSAND = 1000;
BENCHMARK(indexOf<vorb::ArrayList, String>)->Arg(THOUSAND);
BENCHMARK(indexOf<vorb::ArrayList, Integer32>)->Arg(THOUSAND);
BENCHMARK(indexOf<vorb::ArrayList, Item>)->Arg(THOUSAND);
BENCHMARK(indexOf<vorb::LinkedList, String>)->Arg(THOUSAND);
BENCHMARK(removeByValue<vorb::ArrayList>)->Arg(THOUSAND);
#ifdef VX_BENCH_QT
BENCHMARK(indexOfTextQt)->Arg(THOUSAND);
BENCHMARK(indexOfObjectQt)->Arg(THOUSAND);
BENCHMARK(removeByValueQt)->Arg(THOUSAND);
BENCHMARK(retainAllTextQt)->Arg(THOUSAND)->Arg(10 * THOUSAND);
#endif
BENCHMARK(addAllInTheMiddle)->Arg(THOUSAND)->Arg(10 * THOUSAND);
BENCHMARK(addAllInTheMiddleStandard)->Arg(THOUSAND)->Arg(10 * THOUSAND);
BENCHMARK(retainAll<Item>)->Arg(THOUSAND)->Arg(10 * THOUSAND);
BENCHMARK(retainAll<String>)->Arg(THOUSAND)->Arg(10 * THOUSAND);

} // namespace
