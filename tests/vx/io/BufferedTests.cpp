#include "StreamDoubles.h"

#include "tests/Slots.h"

#include "vx/Reference.h"

#include <functional>
#include <random>

using namespace vx;
using namespace vx::io;

namespace {

template <class T>
class Twins : public ::testing::Test {
protected:
    /// Text of plain letters, so that events and results can be read.
    static std::vector<typename T::Unit> letters(int count) { return unitsFrom<typename T::Unit>('a', count); }
    static const typename T::Unit* text(const char* plain)
    {
        static std::vector<typename T::Unit> kept;
        kept.assign(plain, plain + std::char_traits<char>::length(plain));
        return kept.data();
    }
    static std::vector<typename T::Unit> readUpTo(typename T::Input& input, int length)
    {
        std::vector<typename T::Unit> units(static_cast<std::size_t>(length));
        units.resize(static_cast<std::size_t>(std::max(input.read(units.data(), length), 0)));
        return units;
    }

    static constexpr const typename T::Unit* NOTHING = nullptr;
    std::string m_events;
};

using Families = ::testing::Types<Bytes, Chars>;
TYPED_TEST_SUITE(Twins, Families);

TYPED_TEST(Twins, StandInTheirOrder)
{
    using In = typename TypeParam::Input;
    using Out = typename TypeParam::Output;
    using Unit = typename TypeParam::Unit;
    const std::size_t first = slotOf(&Object::toString) + 1;
    const auto readUnits = slotOf<std::int32_t (In::*)(Unit*, std::int32_t)>(&In::read);
    const std::initializer_list<std::size_t> reading {readUnits, slotOf<int (In::*)()>(&In::read), slotOf(&In::skip),
        slotOf(&In::available), slotOf(&In::close), slotOf(&In::markSupported), slotOf(&In::mark), slotOf(&In::reset)};
    const auto writeUnits = slotOf<void (Out::*)(const Unit*, std::int32_t)>(&Out::write);
    const std::initializer_list<std::size_t> writing {
        writeUnits, slotOf<void (Out::*)(Unit)>(&Out::write), slotOf(&Out::flush), slotOf(&Out::close)};
    expectSlots("reading", first + 2 * (sizeof(Unit) == 1), reading); // bytes have two overloads in front
    expectSlots("writing", first + 2, writing); // as characters have here
}

TYPED_TEST(Twins, HaveDefaultsThatRestOnTheBlockRead)
{
    using Unit = typename TypeParam::Unit;
    struct Least : TypeParam::Input { // a class that brings nothing else
        explicit Least(Source<TypeParam>& source)
            : m_source(source)
        {
        }
        std::int32_t read(Unit* target, std::int32_t length) override { return m_source.read(target, length); }
        Source<TypeParam>& m_source;
    };
    auto units = unitsFrom<Unit>(0, 700);
    units[0] = static_cast<Unit>(-1);
    Source<TypeParam> source(units, this->m_events, {1, 100, 0, 256, 44, 256});
    Least least(source);
    typename TypeParam::Input& input = least;

    EXPECT_EQ(input.read(), TypeParam::LARGEST);
    EXPECT_EQ(input.skip(0), 0);
    EXPECT_EQ(input.skip(-5), 0);
    EXPECT_EQ(input.skip(400), 400);
    EXPECT_EQ(input.skip(1000), 299);
    EXPECT_EQ(input.read(), -1);
    EXPECT_EQ(this->m_events, "read(1) read(256) read(256) read(256) read(44) read(256) read(256) read(256) read(1) ");
    EXPECT_EQ(input.available(), 0);
    EXPECT_FALSE(input.markSupported());
    input.mark(10);
    input.close();
    expectThrow<IoException>([&] { input.reset(); }, u"mark/reset not supported");
}

TYPED_TEST(Twins, ForwardThroughFiltersUnchanged)
{
    using Unit = typename TypeParam::Unit;
    class Everything : public TypeParam::BufferedInput { // each operation is overridden
    public:
        explicit Everything(std::string& events)
            : TypeParam::BufferedInput(nullptr, 16)
            , m_events(events)
        {
        }
        std::int32_t read(Unit*, std::int32_t length) override { return note("block ", length + 1); }
        int read() override { return note("unit ", 7); }
        std::int32_t skip(std::int32_t count) override { return note("skip ", count + 2); }
        std::int32_t available() override { return note("available ", 9); }
        void close() override { note("close ", 0); }
        bool markSupported() override { return note("supported ", 1) == 1; }
        void mark(std::int32_t limit) override { note("mark", limit), m_events += std::to_string(limit) + " "; }
        void reset() override { note("reset ", 0); }

    private:
        int note(const char* event, int result)
        {
            m_events += event;
            return result;
        }
        std::string& m_events;
    };
    const Reference<typename TypeParam::Input> filter(
        new typename TypeParam::FilterInput(new Everything(this->m_events)));
    Unit unit {};
    EXPECT_EQ(filter->read(&unit, 3), 4);
    EXPECT_EQ(filter->read(), 7);
    EXPECT_EQ(filter->skip(-1), 1);
    EXPECT_EQ(filter->available(), 9);
    EXPECT_TRUE(filter->markSupported());
    filter->mark(-3);
    filter->reset();
    filter->close();
    EXPECT_EQ(this->m_events, "block unit skip available supported mark-3 reset close ");

    this->m_events.clear();
    {
        const Reference<typename TypeParam::Output> output(
            new typename TypeParam::FilterOutput(new Sink<TypeParam>(this->m_events)));
        output->write(this->text("abc"), 3);
        output->write(static_cast<Unit>('d'));
        output->write(this->NOTHING, 0);
        output->flush();
        output->close();
    }
    EXPECT_EQ(this->m_events, "write(abc) write(d) write() flush close gone ");
}

TYPED_TEST(Twins, WithoutASourceAreAsClosed)
{
    using Unit = typename TypeParam::Unit;
    typename TypeParam::FilterInput filter(nullptr);
    typename TypeParam::BufferedInput buffered(nullptr, 16);
    typename TypeParam::FilterOutput filterOut(nullptr);
    typename TypeParam::BufferedOutput bufferedOut(nullptr, 16);
    bufferedOut.write(static_cast<Unit>('a'));
    const std::function<void()> failing[] = {[&] { filter.read(); }, [&] { filter.reset(); }, [&] { buffered.read(); },
        [&] { buffered.available(); }, [&] { filterOut.flush(); }, [&] { bufferedOut.flush(); }};
    for (const auto& work : failing)
        expectThrow<IoException>(work, u"stream closed");
    EXPECT_FALSE(filter.markSupported());
    filter.close();
    buffered.close();
    filterOut.close();
    bufferedOut.close();
}

TYPED_TEST(Twins, ReadInBlocksOfAtLeast16AndPastTheBuffer)
{
    struct Row {
        int size; // of the buffer
        int available; // in the source
        std::vector<int> steps; // of the source
        std::vector<int> lengths; // asked for
        const char* results; // units given, or -1
        const char* events;
    };
    using S = Source<TypeParam>;
    const Row rows[] = {
        {5, 0, {}, {1, 15, 1}, "1 15 1 ", "read(16) read(16) "},
        {-1, 0, {}, {16}, "16 ", "read(16) "}, // 16 are asked for: as many as the buffer has room for
        {16, 0, {}, {40}, "40 ", "read(40) "},
        {16, 0, {}, {1, 40}, "1 15 ", "read(16) available "}, // the rest would have to wait
        {16, 1, {}, {1, 40}, "1 40 ", "read(16) available read(25) "},
        {16, 1, {}, {1, 20}, "1 20 ", "read(16) available read(16) "},
        {16, 1, {16, 4}, {1, 40}, "1 19 ", "read(16) available read(25) "}, // a short read past the buffer ends it
        {16, 1, {16, 4}, {1, 20, 1}, "1 20 1 ", "read(16) available read(16) available read(16) "},
        {16, 0, {3}, {5, 5}, "3 5 ", "read(16) available read(16) "},
        {16, 0, {S::NOTHING, 3}, {4, 4}, "-1 3 ", "read(16) read(16) available "},
        {16, 0, {S::NOTHING, 3}, {16, 16}, "0 3 ", "read(16) read(16) "},
        {64, 0, {}, {0, -1, 60, 10, 10}, "0 0 50 -1 -1 ", "read(64) available read(64) read(64) "},
        {16, 1, {}, {45, 10, 16, 16}, "45 5 -1 -1 ", "read(45) read(16) available read(16) read(16) read(16) "},
    };
    for (const Row& row : rows) {
        this->m_events.clear();
        auto* source = new S(this->letters(50), this->m_events, row.steps);
        source->m_available = row.available;
        const Reference<typename TypeParam::BufferedInput> input(
            new typename TypeParam::BufferedInput(source, row.size));
        std::string results;
        std::vector<typename TypeParam::Unit> all;
        for (const int length : row.lengths) {
            std::vector<typename TypeParam::Unit> units(64);
            const int got = input->read(units.data(), length);
            results += std::to_string(got) + " ";
            all.insert(all.end(), units.begin(), units.begin() + std::max(got, 0));
        }
        EXPECT_EQ(results, row.results) << row.events;
        EXPECT_EQ(this->m_events, row.events);
        EXPECT_EQ(all, this->letters(static_cast<int>(all.size()))) << row.events;
    }
}

TYPED_TEST(Twins, CountWhatIsAvailableWithTheBuffer)
{
    auto* source = new Source<TypeParam>(this->letters(50), this->m_events);
    const Reference<typename TypeParam::BufferedInput> input(new typename TypeParam::BufferedInput(source, 16));
    EXPECT_EQ(input->skip(20), 20);
    EXPECT_EQ(this->m_events, "read(16) read(16) ");
    source->m_available = 5;
    EXPECT_EQ(input->available(), 5 + 12);
    source->m_available = INT32_MAX;
    EXPECT_EQ(input->available(), INT32_MAX);
}

TYPED_TEST(Twins, GoBackToAMark)
{
    struct Row {
        int before; // units read before the mark
        int limit;
        int behind; // units read behind it
        const char16_t* failure; // of reset
    };
    const Row rows[] = {
        {0, 100, 90, nullptr}, // the buffer grows
        {3, 17, 16, nullptr},
        {3, 4, 10, nullptr}, // within the buffer the limit does not matter
        {3, 4, 13, nullptr},
        {3, 4, 14, u"mark invalid"},
        {3, 16, 30, u"mark invalid"},
        {3, 0, 13, nullptr},
        {3, -1, 14, u"mark invalid"},
        {16, 1, 1, nullptr}, // set where the buffer had just run out
        {16, 1, 17, u"mark invalid"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.before) + " " + std::to_string(row.limit) + " " + std::to_string(row.behind));
        const Reference<typename TypeParam::BufferedInput> input(
            new typename TypeParam::BufferedInput(new Source<TypeParam>(this->letters(120), this->m_events), 16));
        EXPECT_TRUE(input->markSupported());
        expectThrow<IoException>([&] { input->reset(); }, u"stream not marked");
        input->skip(row.before);
        input->mark(row.limit);
        for (int round = 0; round < 2; ++round) { // a mark stays where it is
            input->skip(row.behind);
            if (row.failure != nullptr) {
                expectThrow<IoException>([&] { input->reset(); }, row.failure);
                expectThrow<IoException>([&] { input->reset(); }, row.failure);
                break;
            }
            input->reset();
            EXPECT_EQ(input->read(), 'a' + row.before);
            input->reset();
        }
    }
}

TYPED_TEST(Twins, LoseNothingWhenTheSourceFails)
{
    using S = Source<TypeParam>;
    const Reference<typename TypeParam::BufferedInput> input(new typename TypeParam::BufferedInput(
        new S(this->letters(50), this->m_events, {16, S::FAIL, 16, S::FAIL, S::FAIL}), 16));
    input->skip(10);
    input->mark(30);
    for (int unit = 'a' + 10; unit < 'a' + 16; ++unit)
        EXPECT_EQ(input->read(), unit);
    expectThrow<TimeoutException>([&] { input->read(); }, u"source failed");
    input->reset();
    EXPECT_EQ(this->readUpTo(*input, 20), unitsFrom<typename TypeParam::Unit>('a' + 10, 6)); // and did not wait
    EXPECT_EQ(input->skip(16), 16);
    expectThrow<TimeoutException>([&] { this->readUpTo(*input, 16); }, u"source failed");
    expectThrow<TimeoutException>([&] { input->skip(1); }, u"source failed");
    input->reset();
    EXPECT_EQ(input->read(), 'a' + 10);
    EXPECT_EQ(input->skip(100), 39);
}

TYPED_TEST(Twins, KeepEverythingInOrderWhateverIsAsked)
{
    // Reads of any length, skips, marks and pauses of the source against a plain index into the data.
    using Unit = typename TypeParam::Unit;
    const auto seed = std::random_device()();
    std::mt19937 chance(seed);
    const auto upTo = [&](int most) { return std::uniform_int_distribution<int>(0, most)(chance); };
    const std::vector<Unit> data = unitsFrom<Unit>(0, 3000);
    for (int round = 0; round < 50; ++round) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(round));
        std::vector<int> steps(2000);
        std::generate(steps.begin(), steps.end(), [&] { return upTo(40); });
        auto* source = new Source<TypeParam>(data, this->m_events, steps);
        const Reference<typename TypeParam::BufferedInput> input(
            new typename TypeParam::BufferedInput(source, upTo(40)));
        int position = 0;
        int mark = 0;
        int limit = 0;
        for (int call = 0; call < 400; ++call) {
            source->m_available = upTo(1);
            const int count = upTo(60);
            switch (upTo(4)) {
            case 0:
                if (const int unit = input->read(); unit != -1) {
                    ASSERT_EQ(static_cast<Unit>(unit), data[static_cast<std::size_t>(position++)]);
                }
                break;
            case 1:
                position += input->skip(count);
                break;
            case 2:
                limit = count;
                input->mark(limit);
                mark = position;
                break;
            case 3:
                if (position - mark < limit) {
                    input->reset();
                    position = mark;
                }
                break;
            default:
                const std::vector<Unit> units = this->readUpTo(*input, count);
                ASSERT_TRUE(std::equal(units.begin(), units.end(), data.begin() + position));
                position += static_cast<int>(units.size());
            }
        }
    }
}

TYPED_TEST(Twins, AreClosedForGoodButForClosing)
{
    using Unit = typename TypeParam::Unit;
    Unit unit {};
    {
        const Reference<typename TypeParam::BufferedInput> input(
            new typename TypeParam::BufferedInput(new Source<TypeParam>(this->letters(50), this->m_events), 16));
        input->mark(1);
        input->close();
        input->close();
        const std::function<void()> operations[] = {[&] { input->read(); }, [&] { input->read(&unit, 0); },
            [&] { input->skip(0); }, [&] { input->available(); }, [&] { input->mark(1); }, [&] { input->reset(); }};
        for (const auto& operation : operations)
            expectThrow<IoException>(operation, u"stream closed");
        EXPECT_TRUE(input->markSupported());
    }
    EXPECT_EQ(this->m_events, "close close gone ");

    this->m_events.clear();
    {
        const Reference<typename TypeParam::BufferedOutput> output(
            new typename TypeParam::BufferedOutput(new Sink<TypeParam>(this->m_events), 16));
        output->write(this->text("lost"), 4);
        output->close();
        output->close();
        const std::function<void()> operations[]
            = {[&] { output->write(unit); }, [&] { output->write(&unit, 0); }, [&] { output->flush(); }};
        for (const auto& operation : operations)
            expectThrow<IoException>(operation, u"stream closed");
    }
    EXPECT_EQ(this->m_events, "close close gone ");
}

TYPED_TEST(Twins, CollectSmallWritesAndFlushOnlyWhenAsked)
{
    struct Row {
        int size;
        std::vector<const char*> writes; // of one unit: the overload for one
        const char* events; // before and behind "|" a flush
    };
    const Row rows[] = {
        {16, {"0123456789", "abcdef"}, "| write(0123456789abcdef) flush gone "},
        {16, {"0123456789", "abcdefg"}, "write(0123456789) | write(abcdefg) flush gone "},
        {16, {"0123456789", "abcdef", "!"}, "write(0123456789abcdef) | write(!) flush gone "},
        {16, {"0123456789abcdef"}, "write(0123456789abcdef) | flush gone "},
        {3, {"01", "0123456789abcdefgh"}, "write(01) write(0123456789abcdefgh) | flush gone "},
        {20, {"0123456789abcdef", "ghij"}, "| write(0123456789abcdefghij) flush gone "},
        {-7, {""}, "| flush gone "},
    };
    for (const Row& row : rows) {
        this->m_events.clear();
        {
            const Reference<typename TypeParam::BufferedOutput> output(
                new typename TypeParam::BufferedOutput(new Sink<TypeParam>(this->m_events), row.size));
            for (const std::string write : row.writes) {
                if (write.size() == 1)
                    output->write(static_cast<typename TypeParam::Unit>(write[0]));
                else
                    output->write(this->text(write.c_str()), static_cast<int>(write.size()));
            }
            output->write(this->NOTHING, 0);
            output->write(this->NOTHING, -1);
            this->m_events += "| ";
            output->flush();
            output->write(this->text("lost"), 4); // neither the destructor flushes
        }
        EXPECT_EQ(this->m_events, row.events);
    }
}

TYPED_TEST(Twins, KeepWhatASinkDidNotTake)
{
    auto* sink = new Sink<TypeParam>(this->m_events);
    const Reference<typename TypeParam::BufferedOutput> output(new typename TypeParam::BufferedOutput(sink, 16));
    output->write(this->text("0123456789"), 10);
    sink->m_fails = true;
    EXPECT_THROW(output->flush(), TimeoutException);
    EXPECT_THROW(output->write(this->text("abcdefg"), 7), TimeoutException);
    EXPECT_THROW(output->write(this->text("abcdefghijklmnopq"), 17), TimeoutException);
    sink->m_fails = false;
    this->m_events.clear();
    output->write(this->text("!"), 1);
    output->flush();
    EXPECT_EQ(this->m_events, "write(0123456789!) flush ");
}

TYPED_TEST(Twins, RefuseANullBufferAndASourceThatClaimsTooMuch)
{
    struct Liar : TypeParam::Input {
        std::int32_t read(typename TypeParam::Unit*, std::int32_t length) override { return length + 1; }
    };
    using Unit = typename TypeParam::Unit;
    std::vector<Unit> units(64);
    typename TypeParam::BufferedInput input(new Liar, 16);
    typename TypeParam::BufferedOutput output(new Sink<TypeParam>(this->m_events), 16);
    Liar liar;
    const std::pair<std::function<void()>, const char16_t*> rows[] = {
        {[&] { input.read(const_cast<Unit*>(this->NOTHING), 1); }, u"null buffer"},
        {[&] { output.write(this->NOTHING, 1); }, u"null buffer"},
        {[&] { input.read(units.data(), 1); }, u"stream read more than asked"},
        {[&] { input.read(units.data(), 32); }, u"stream read more than asked"},
        {[&] { liar.skip(1); }, u"stream read more than asked"},
    };
    for (const auto& [work, description] : rows)
        expectThrow<IoException>(work, description);
}

} // namespace
