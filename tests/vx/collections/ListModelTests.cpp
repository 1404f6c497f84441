#include "tests/Random.h"
#include "tests/vx/Common.h"
#include "tests/vx/collections/Elements.h"
#include "vx/collections/vorb/ArrayList.h"
#include "vx/collections/vorb/LinkedList.h"

#include <set>

namespace vx::collections::vorb {
namespace {

/// A list class whose iterators cannot use the nodes directly.
class DerivedLinkedList : public LinkedList { };

/// Runs the same random operations on a list, its sublists and all their iterators, and on a plain vector. A view or an
/// iterator is valid until the list is changed in another way than through it; that is all that the model knows of
/// modification counts.
template <class ListClass>
class Model {
public:
    explicit Model(Random& random)
        : m_random(random)
    {
        m_parts.push_back(std::make_unique<Part>(Part {new ListClass, nullptr, 0, 0, true}));
    }

    /// One operation: its name, the expected result and the actual one.
    std::string step()
    {
        if (m_parts.size() > 8 || m_cursors.size() > 12 || m_values.size() > 60)
            startOver();
        const int kind = below(8);
        if (kind > 3 && !m_cursors.empty())
            return cursorStep(*m_cursors[below(m_cursors.size())]);
        Part& part = *m_parts[kind > 3 ? 0 : below(m_parts.size())];
        return kind < 3 ? partStep(part) : viewStep(part);
    }

    /// Compares all that can be read.
    std::string compareAll()
    {
        const Reference<List>& list = m_parts[0]->list;
        std::string difference = verdict("elements", textOfAll(m_values), textOfAll(*list));
        std::uint32_t hash = 1;
        for (const int value : m_values)
            hash = hash * 38 + static_cast<std::uint32_t>(value == NO_ITEM ? 0 : value);
        difference += verdict("hash", std::to_string(hash), std::to_string(list->hashCode()));
        const int lost = Item::s_alive
            - static_cast<int>(std::count_if(m_values.begin(), m_values.end(), [](int v) { return v != NO_ITEM; }));
        return difference + verdict("items", "0", std::to_string(lost));
    }

private:
    struct Part {
        Reference<List> list;
        Part* parent;
        int offset, size; ///< in the parent
        bool alive;

        int start() const { return parent == nullptr ? 0 : offset + parent->start(); }
        bool reachable() const { return alive && (parent == nullptr || parent->reachable()); }
    };
    struct Cursor {
        Reference<ListIterator> iterator;
        Part* part;
        int next, last; ///< in the part; NO_ITEM if none
        bool alive;
    };

    int below(std::size_t end) { return static_cast<int>(m_random() % end); }
    int anyValue() { return below(8) - 1; }

    static std::string verdict(const char* operation, const std::string& expected, const std::string& actual)
    {
        return expected == actual ? "" : std::string(operation) + ": expected " + expected + ", got " + actual + "\n";
    }

    void startOver()
    {
        m_cursors.clear();
        m_parts.resize(1);
        m_parts[0]->list->clear();
        m_parts[0]->size = 0;
        m_values.clear();
    }

    int& at(const Part& part, int index) { return m_values[static_cast<std::size_t>(part.start() + index)]; }

    /// The list has changed through `part`: its ancestors know that, and all other parts do not.
    void changed(Part& part, int by, Cursor* through, bool isKnown = true)
    {
        std::set<const Part*> aware;
        for (Part* way = &part; way != nullptr; way = way->parent) {
            way->size += by;
            if (isKnown || way->parent == nullptr)
                aware.insert(way);
        }
        for (const auto& other : m_parts)
            other->alive = other->alive && aware.contains(other.get());
        for (const auto& cursor : m_cursors)
            cursor->alive = cursor.get() == through;
    }
    void insert(Part& part, int index, int value, Cursor* through = nullptr)
    {
        m_values.insert(m_values.begin() + part.start() + index, value);
        changed(part, +1, through);
    }
    int erase(Part& part, int index, Cursor* through = nullptr)
    {
        const int value = at(part, index);
        m_values.erase(m_values.begin() + part.start() + index);
        changed(part, -1, through);
        return value;
    }

    std::string partStep(Part& part)
    {
        List& list = *part.list;
        const int index = below(static_cast<std::size_t>(part.size) + 3) - 1, value = anyValue();
        const Reference<IVXUnknown> element = item(value);
        const bool works = part.reachable();
        const int operation = below(works ? 9 : 4);
        const bool fits = index >= 0 && (operation == 3 ? index <= part.size : index < part.size);
        const bool does = fits && works;
        const std::string fault = fits ? "plain" : "range";
        int first = -1, last = -1;
        for (int place = 0; works && place < part.size; ++place)
            if (at(part, place) == value)
                first = first == -1 ? place : first, last = place;

        switch (operation) {
        case 0:
            return verdict("get", does ? textOf(at(part, index)) : fault, outcome([&] { return list.get(index); }));
        case 1:
            if (does)
                changed(part, 0, nullptr);
            return verdict("set", does ? textOf(std::exchange(at(part, index), value)) : fault,
                outcome([&] { return list.set(index, element.get()); }));
        case 2:
            return verdict(
                "remove", does ? textOf(erase(part, index)) : fault, outcome([&] { return list.remove(index); }));
        case 3:
            if (does)
                insert(part, index, value);
            return verdict("add", does ? "1" : fault, outcome([&] { return int {list.add(index, element.get())}; }));
        case 4: // at the end: the whole list counts no change, a view inserts by index into its parent
            if (part.parent == nullptr) {
                m_values.push_back(value);
                ++part.size;
            } else {
                insert(part, part.size, value);
            }
            return verdict("append", "1", outcome([&] { return int {list.add(element.get())}; }));
        case 5:
            return verdict("indexOf", std::to_string(first), std::to_string(list.indexOf(element.get())))
                + verdict("lastIndexOf", std::to_string(last), std::to_string(list.lastIndexOf(element.get())))
                + verdict("contains", textOf(first >= 0), textOf(int {list.contains(element.get())}));
        case 6:
            if (first >= 0)
                erase(part, first);
            return verdict("remove element", textOf(first >= 0), textOf(int {list.remove(element.get())}));
        case 7: {
            const Reference<List> more(new ArrayList);
            const int start = below(static_cast<std::size_t>(part.size) + 1);
            for (int place = start; place < start + 3; ++place) {
                const int added = anyValue();
                more->add(item(added).get());
                insert(part, place, added);
            }
            return verdict("add all", "1", textOf(int {list.addAll(start, *more)}));
        }
        default: {
            if (below(20) != 0)
                return "";
            if (part.parent != nullptr && below(2) == 0) {
                while (part.size > 0)
                    erase(part, part.size - 1);
                return verdict("clear", "done", outcome([&] { list.clear(); }));
            }
            const Reference<List> kept(new LinkedList);
            kept->add(element.get());
            const int before = part.size;
            for (int place = before - 1; place >= 0; --place)
                if (at(part, place) != value)
                    erase(part, place);
            return verdict("retain all", textOf(part.size != before), textOf(int {list.retainAll(*kept)}));
        }
        }
    }

    /// A new view or iterator of a list, a bad place included.
    std::string viewStep(Part& part)
    {
        if (!part.reachable())
            return "";
        const int from = below(static_cast<std::size_t>(part.size) + 3) - 1;
        const int to = below(static_cast<std::size_t>(part.size) + 3) - 1;
        if (below(3) == 0) {
            Reference<List> view;
            const bool fits = from >= 0 && from <= to && to <= part.size;
            const std::string result = outcome([&] { view = part.list->createSubList(from, to); });
            if (fits)
                m_parts.push_back(std::make_unique<Part>(Part {view, &part, from, to - from, true}));
            return verdict("sublist", fits ? "done" : "range", result);
        }
        Reference<ListIterator> iterator;
        const bool fits = from >= 0 && from <= part.size;
        const std::string result = outcome([&] { iterator = part.list->createListIterator(from); });
        if (fits)
            m_cursors.push_back(std::make_unique<Cursor>(Cursor {iterator, &part, from, NO_ITEM, true}));
        return verdict("iterator", fits ? "done" : "range", result);
    }

    std::string cursorStep(Cursor& cursor)
    {
        ListIterator& iterator = *cursor.iterator;
        Part& part = *cursor.part;
        const bool hasNext = cursor.next<part.size, hasPrevious = cursor.next> 0;
        const int value = anyValue();
        const bool hasLast = cursor.alive && cursor.last != NO_ITEM;
        const std::string pastTheEnd = part.parent == nullptr && cursor.alive ? "range" : "plain";
        std::string expected = hasLast ? "done" : cursor.alive ? "state" : "plain";

        switch (below(7)) {
        case 0:
        case 1:
            expected = cursor.alive && hasNext ? textOf(at(part, cursor.last = cursor.next++)) : pastTheEnd;
            return verdict("next", expected, outcome([&] { return iterator.next(); }));
        case 2:
            expected = cursor.alive && hasPrevious ? textOf(at(part, cursor.last = --cursor.next)) : pastTheEnd;
            return verdict("previous", expected, outcome([&] { return iterator.previous(); }));
        case 3:
            if (hasLast) {
                erase(part, cursor.last, &cursor);
                cursor.next -= cursor.last < cursor.next;
                cursor.last = NO_ITEM;
            }
            return verdict("iterator remove", expected, outcome([&] { iterator.remove(); }));
        case 4:
            if (hasLast) { // views treat it as a change by others, even if their own iterator made it
                at(part, cursor.last) = value;
                changed(part, 0, &cursor, false);
            }
            return verdict("iterator set", expected, outcome([&] { iterator.set(item(value).get()); }));
        case 5:
            if (cursor.alive) {
                insert(part, cursor.next++, value, &cursor);
                cursor.last = NO_ITEM;
            }
            expected = cursor.alive ? "done" : "plain";
            return verdict("iterator add", expected, outcome([&] { iterator.add(item(value).get()); }));
        default:
            return verdict("has next", textOf(hasNext), textOf(int {iterator.hasNext()}))
                + verdict("has previous", textOf(hasPrevious), textOf(int {iterator.hasPrevious()}))
                + verdict("next index", std::to_string(cursor.next), std::to_string(iterator.nextIndex()))
                + verdict("previous index", std::to_string(cursor.next - 1), std::to_string(iterator.previousIndex()));
        }
    }

    Random& m_random;
    std::vector<int> m_values;
    std::vector<std::unique_ptr<Part>> m_parts; ///< the whole first
    std::vector<std::unique_ptr<Cursor>> m_cursors;
};

template <class ListClass>
class ListModel : public testing::Test {
};

using ListClasses = testing::Types<ArrayList, LinkedList, DerivedLinkedList>;
TYPED_TEST_SUITE(ListModel, ListClasses);

TYPED_TEST(ListModel, AgreesWithAVectorThroughRandomOperations)
{
    Random random;
    for (int round = 0; round < 20; ++round) {
        Model<TypeParam> model(random);
        for (int step = 0; step < 3000; ++step)
            ASSERT_EQ(model.step() + model.compareAll(), "") << "round " << round << ", step " << step;
    }
    EXPECT_EQ(Item::s_alive, 0);
}

} // namespace
} // namespace vx::collections::vorb
