#include "tests/Random.h"
#include "tests/vx/Common.h"
#include "tests/vx/collections/Elements.h"
#include "vx/collections/DefaultComparator.h"
#include "vx/collections/vorb/ArrayList.h"
#include "vx/collections/vorb/HashMap.h"
#include "vx/collections/vorb/HashSet.h"
#include "vx/util/Comparator.h"

namespace vx::collections::vorb {
namespace {

constexpr int NUMBERS = 24; ///< of keys, and of values above them

struct Entry {
    int key; ///< the number that it stands for, NO_ITEM for null
    std::uint32_t hash;
    const IVXUnknown *keyObject, *value;
};
using EntryPtr = std::shared_ptr<Entry>;
using Chain = std::vector<EntryPtr>;

/// The entries in the order of a chained table: from the last bucket to the first, and in a bucket the newest entry
/// first.
struct Model {
    struct Cursor {
        int expected;
        Chain rest; ///< backwards
        EntryPtr last;
    };

    EntryPtr find(int key) const
    {
        const auto found
            = std::find_if(entries.begin(), entries.end(), [&](const auto& entry) { return entry->key == key; });
        return found != entries.end() ? *found : nullptr;
    }
    void insert(const EntryPtr& entry)
    {
        const auto isNotBefore = [&](const auto& other) { return other->hash % buckets <= entry->hash % buckets; };
        entries.insert(std::find_if(entries.begin(), entries.end(), isNotBefore), entry);
    }
    void put(const Entry& fresh)
    {
        if (const EntryPtr entry = find(fresh.key)) {
            entry->value = fresh.value;
            return;
        }
        ++modifications;
        if (entries.size() >= static_cast<std::size_t>(static_cast<double>(buckets) * load)) {
            buckets = buckets * 2 + 1;
            for (const EntryPtr& entry : std::exchange(entries, {}))
                insert(entry);
        }
        insert(std::make_shared<Entry>(fresh));
    }
    void remove(const EntryPtr& entry) { modifications += static_cast<int>(std::erase(entries, entry)); }

    Cursor cursor() const { return {modifications, Chain(entries.rbegin(), entries.rend()), nullptr}; }
    std::string next(Cursor& cursor) const
    {
        if (cursor.expected != modifications || cursor.rest.empty())
            return "plain";
        cursor.last = cursor.rest.back();
        cursor.rest.pop_back();
        return "done";
    }
    std::string remove(Cursor& cursor)
    {
        if (cursor.expected != modifications || cursor.last == nullptr)
            return cursor.expected != modifications ? "plain" : "state";
        remove(std::exchange(cursor.last, nullptr));
        ++cursor.expected;
        return "done";
    }

    float load;
    std::uint32_t buckets;
    int modifications = 0;
    Chain entries;
};

/// The hash reads only every second one of the 64 units, so groups of `sharing` keys have one hash.
std::u16string keyText(int number, int sharing)
{
    std::u16string text(64, static_cast<char16_t>(u'a' + number / sharing));
    text[33] = static_cast<char16_t>(u'0' + number % sharing);
    return text;
}
std::uint32_t textHash(const std::u16string& text)
{
    std::uint32_t hash = 0;
    for (std::size_t index = 0; index < 64; index += 2)
        hash = hash * 37 + text[index];
    return hash;
}

/// Applies each operation to a map, its views, entries and iterators, and to the model.
class Trial {
public:
    /// Keys are numbers, or texts of which `sharing` have one hash.
    Trial(Random& random, int sharing, IVXComparator* comparator)
        : m_random(random)
        , m_sharing(sharing)
        , m_model {below(2) == 0 ? 0.75F : 2.5F, 1 + static_cast<std::uint32_t>(below(4)), 0, {}}
    {
        m_map = new HashMap(comparator, comparator, static_cast<int>(m_model.buckets), m_model.load);
        for (int number = 0; number < 2 * NUMBERS; ++number) // two equal keys of each
            m_things.push_back(
                sharing != 0 ? (new String(keyText(number / 2, sharing)))->GetUnknown() : item(number / 2));
        for (int number = 0; number < NUMBERS; ++number)
            m_things.push_back(item(number));
    }
    ~Trial()
    {
        m_cursors.clear();
        m_held.clear();
        m_map->clear();
        for (const auto& thing : m_things)
            EXPECT_EQ(dynamic_cast<ComObject&>(*thing).GetRefCount(), 1U) << "it is still held";
    }

    /// One operation.
    void step()
    {
        const int number = below(NUMBERS + 1) - 1;
        const EntryPtr found = m_model.find(number);
        const std::string old = name(found != nullptr ? found->value : nullptr);
        const IVXUnknown* equal = key(number, 1);
        switch (below(9)) {
        default: {
            IVXUnknown *keyObject = key(number, below(2)), *value = anyValue();
            EXPECT_EQ(name(m_map->put(keyObject, value).get()), old) << "put";
            m_model.put({number, hash(number), keyObject, value});
            break;
        }
        case 0: {
            const int way = below(3);
            if (way == 0)
                EXPECT_EQ(m_map->createKeySet()->remove(equal), found != nullptr) << "key set's remove";
            else
                EXPECT_EQ(name((way == 1 ? m_map->remove(equal) : m_map->AbstractMap::remove(equal)).get()), old)
                    << "remove";
            m_model.remove(found);
            break;
        }
        case 1:
            EXPECT_EQ(name(m_map->get(equal).get()), old) << "get";
            EXPECT_EQ(name(m_map->AbstractMap::get(equal).get()), old) << "get by a walk";
            EXPECT_EQ(m_map->AbstractMap::containsKey(equal), found != nullptr) << "containsKey by a walk";
            EXPECT_EQ(m_map->containsKey(equal), found != nullptr) << "containsKey";
            EXPECT_EQ(m_map->createKeySet()->contains(equal), found != nullptr) << "key set's contains";
            break;
        case 2:
            changeAll();
            break;
        case 3: {
            const IVXUnknown* value = anyValue();
            const Chain& all = m_model.entries;
            const auto first
                = std::find_if(all.begin(), all.end(), [&](const auto& entry) { return entry->value == value; });
            const EntryPtr holder = first != all.end() ? *first : nullptr;
            EXPECT_EQ(m_map->containsValue(value), holder != nullptr) << "containsValue";
            EXPECT_EQ(m_map->AbstractMap::containsValue(value), holder != nullptr) << "containsValue by a walk";
            if (below(3) == 0) {
                EXPECT_EQ(m_map->createValueCollection()->remove(value), holder != nullptr) << "values' remove";
                m_model.remove(holder);
            }
            break;
        }
        case 4:
            if (!m_held.empty()) {
                const auto& [entry, model] = m_held.front();
                IVXUnknown* value = anyValue();
                EXPECT_EQ(name(entry->setValue(value).get()), name(std::exchange(model->value, value))) << "setValue";
                m_held.erase(m_held.begin());
            }
        }
        for (int moves = below(2) * below(4); moves > 0; --moves)
            moveCursor();
        EXPECT_EQ(textOf(*m_map), textOf(m_model)) << "map";
        EXPECT_EQ(std::to_string(m_map->getSize()), std::to_string(m_model.entries.size())) << "size";
        for (const auto& [entry, model] : m_held) // in the map or not
            EXPECT_EQ(name(entry->getKey().get()) + name(entry->getValue().get()),
                name(model->keyObject) + name(model->value))
                << "entry";
    }

private:
    int below(int end) { return m_random.below(end); }
    IVXUnknown* thing(int index) const { return m_things[static_cast<std::size_t>(index)].get(); }
    IVXUnknown* key(int number, int copy) const { return number == NO_ITEM ? nullptr : thing(2 * number + copy); }
    IVXUnknown* anyValue() { return below(8) == 0 ? nullptr : thing(2 * NUMBERS + below(NUMBERS)); }
    std::uint32_t hash(int number) const
    {
        if (number == NO_ITEM)
            return 0;
        return m_sharing != 0 ? textHash(keyText(number, m_sharing)) : static_cast<std::uint32_t>(number);
    }
    std::string name(const IVXUnknown* object) const
    {
        const auto place = std::find(m_things.begin(), m_things.end(), object) - m_things.begin();
        return object == nullptr ? "null" : std::to_string(place);
    }
    std::string textOf(const Model& model) const
    {
        std::string text;
        for (const EntryPtr& entry : model.entries)
            text += name(entry->keyObject) + '=' + name(entry->value) + ' ';
        return text;
    }
    std::string textOf(const HashMap& map) const
    {
        std::string text;
        for (const auto [keyObject, value] : map)
            text += name(keyObject) + '=' + name(value) + ' ';
        return text;
    }

    void changeAll()
    {
        const Reference<HashMap> copy(new HashMap(*m_map));
        Model model {m_model.load, m_model.buckets, 0, {}};
        for (const EntryPtr& entry : m_model.entries)
            model.put(*entry);
        EXPECT_EQ(textOf(*copy), textOf(model)) << "copy";
        EXPECT_TRUE(m_map->equals(*copy)) << "equals";
        if (below(6) == 0) {
            m_map->clear();
            m_model.entries.clear();
            ++m_model.modifications;
        }
        if (below(4) == 0) {
            m_map->putAll(*copy);
            for (const EntryPtr& entry : model.entries)
                m_model.put(*entry);
        }
    }

    void moveCursor()
    {
        if (m_cursors.size() < 3 || below(12) == 0) {
            const auto entries = m_map->createEntrySet()->createIterator();
            const auto keys = m_map->createKeySet()->createIterator();
            m_cursors.insert(m_cursors.begin(), {below(2) == 0 ? entries : keys, m_model.cursor()});
            m_cursors.resize(std::min<std::size_t>(m_cursors.size(), 3));
            return;
        }
        auto& cursor = m_cursors[static_cast<std::size_t>(below(3))];
        Model::Cursor& model = cursor.second;
        Iterator* iterator = cursor.first.get();
        if (below(4) == 0) {
            const bool isRight = iterator->hasNext() != model.rest.empty();
            EXPECT_TRUE(isRight || model.expected != m_model.modifications) << "hasNext";
        }
        if (below(4) == 0) {
            EXPECT_EQ(outcome([&] { iterator->remove(); }), m_model.remove(model)) << "iterator's remove";
            return;
        }
        Reference<IVXUnknown> got;
        const std::string expected = m_model.next(model);
        EXPECT_EQ(outcome([&] { got = iterator->next(); }), expected) << "next";
        if (expected != "done")
            return;
        const auto* entry = dynamic_cast<MapEntry*>(got.get());
        EXPECT_EQ(name(entry != nullptr ? entry->getKey().get() : got.get()), name(model.last->keyObject)) << "next";
        if (entry == nullptr)
            return;
        EXPECT_TRUE(m_map->createEntrySet()->contains(got.get())) << "contains";
        m_held.emplace_back(MapEntry::of(got), model.last);
    }

    Random& m_random;
    int m_sharing;
    std::vector<Reference<IVXUnknown>> m_things;
    Model m_model;
    Reference<HashMap> m_map;
    std::vector<std::pair<Reference<Iterator>, Model::Cursor>> m_cursors;
    std::vector<std::pair<Reference<MapEntry>, EntryPtr>> m_held;
};

/// Compares as the library's comparator does, but is of another class.
class OtherComparator : public util::Comparator { };

TEST(HashMap, DoesWhatAPlainTableDoesInTheSameOrder)
{
    Random random;
    const Reference<IVXComparator> other(new OtherComparator);
    for (int round = 0; round < 80; ++round) {
        const int sharing[] = {0, 3, 3, NUMBERS}; // the last makes chains that get an index
        Trial trial(random, sharing[round % 4], round % 4 == 1 ? other.get() : GetDefaultComparator().get());
        for (int step = 0; step < 500; ++step) {
            trial.step();
            ASSERT_FALSE(testing::Test::HasFailure()) << "round " << round << ", step " << step;
        }
    }
}

/// A walk looks at many buckets at once, and few trials have so many.
TEST(HashMap, WalksALargeTableInItsOrder)
{
    Random random;
    constexpr std::pair<int, int> CASES[]
        = {{0, 4000}, {1, 4000}, {40, 4000}, {1500, 4000}, {6000, 4000}, {6, 31}, {6, 32}, {60, 33}, {1, 64}, {20, 97}};
    for (const auto& [count, largest] : CASES) {
        const int capacity = largest < 1000 ? largest : largest / 4 + random.below(largest);
        const Reference<HashMap> map(new HashMap(capacity, 100));
        std::vector<int> expected;
        while (static_cast<int>(expected.size()) < count) {
            const int key = random.below(20 * capacity);
            if (map->put(item(key).get(), item(key).get()) == nullptr)
                expected.insert(expected.begin(), key);
        }
        std::ranges::stable_sort(expected, std::greater<>(), [&](int key) { return key % capacity; });

        std::vector<int> walked, iterated;
        for (const auto [key, value] : *map)
            walked.push_back(dynamic_cast<Item&>(*key).getValue());
        const Reference<Iterator> keys = map->createKeySet()->createIterator();
        while (keys->hasNext())
            iterated.push_back(dynamic_cast<Item&>(*keys->next()).getValue());
        EXPECT_EQ(walked, expected) << "capacity " << capacity;
        EXPECT_EQ(iterated, expected) << "capacity " << capacity;
    }
}

TEST(HashSet, IsMadeAndComparedByItsMap)
{
    const Reference<IVXComparator> other(new OtherComparator);
    const Reference<ArrayList> list(new ArrayList);
    for (const int number : {1, 2, 1, 300})
        list->add(item(number).get());
    const Reference<HashSet> sets[] = {new HashSet(*list), new HashSet(*list, other.get()), new HashSet(other.get())};
    sets[2]->addAll(*list);
    for (const Reference<HashSet>& set : sets) {
        const Reference<HashSet> copy(new HashSet(*set));
        const Reference<IVXUnknown> two = item(2), three = item(3);
        EXPECT_EQ(textOfAll(*copy), "300 2 1 ");
        EXPECT_EQ(copy->getComparator() == other.get(), set != sets[0]);
        EXPECT_TRUE(copy->equals(*set) && copy->equals(*sets[0]) && copy->hashCode() == 0);
        EXPECT_TRUE(copy->contains(two.get()) && copy->remove(two.get()) && !copy->remove(two.get()));
        EXPECT_LT(copy->compareTo(*set), 0);
        EXPECT_TRUE(!copy->contains(three.get()) && copy->add(three.get()) && !copy->add(three.get()));
        EXPECT_NE(copy->compareTo(*set), 0);
        EXPECT_THROW(copy->equals(*list), CastFailedException);
        copy->clear();
        EXPECT_EQ(copy->getSize() + 10 * set->getSize(), 30) << "the keys are shared, the map is not";
    }
}

} // namespace
} // namespace vx::collections::vorb
