#include "StreamDoubles.h"

#include "tests/Outcome.h"
#include "tests/Random.h"
#include "tests/Slots.h"

#include <functional>

using namespace vx;
using namespace vx::io;

namespace {

template <class T>
class Twins : public ::testing::Test {
protected:
    /// Letters only, so that events and results are readable.
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
    expectSlots("reading", first + 2 * (sizeof(Unit) == 1), // byte streams have two more overloads before it
        {slotOf<std::int32_t (In::*)(Unit*, std::int32_t)>(&In::read), slotOf<int (In::*)()>(&In::read), &In::skip,
            &In::available, &In::close, &In::markSupported, &In::mark, &In::reset});
    expectSlots("writing", first + 2, // character streams have it here
        {slotOf<void (Out::*)(const Unit*, std::int32_t)>(&Out::write), slotOf<void (Out::*)(Unit)>(&Out::write),
            &Out::flush, &Out::close});
}

/// The result of each operation.
template <class Family>
std::string readInAllWays(typename Family::Input& in)
{
    std::string results;
    typename Family::Unit units[4] {};
    const std::function<int()> ways[] = {[&] { return in.read(units, 2) + units[0]; }, [&] { return in.read(); },
        [&] { return in.skip(2); }, [&] { return in.available(); }, [&] { return in.markSupported() ? 1 : 0; },
        [&] { return in.mark(3), in.read(); }, [&] { return in.reset(), 0; }, [&] { return in.close(), 0; }};
    for (const auto& way : ways) {
        try {
            results += std::to_string(way()) + ' ';
        } catch (const IoException& failure) {
            results += failure.getDescription().toUtf8() + ' ';
        }
    }
    return results;
}

template <class Family>
void writeInAllWays(typename Family::Output& out)
{
    using Unit = typename Family::Unit;
    const Unit units[] = {'a', 'b', 'c', 0};
    out.write(units, 2);
    out.write(units[2]);
    if constexpr (sizeof(Unit) == sizeof(char16_t)) {
        out.write(units);
        out.write(String(units));
    }
    out.flush();
    out.close();
}

TYPED_TEST(Twins, FiltersHandEverythingOn)
{
    using In = typename TypeParam::Input;
    using Out = typename TypeParam::Output;
    using FilterInput = typename TypeParam::FilterInput;
    using FilterOutput = typename TypeParam::FilterOutput;
    std::string results[2];
    for (const bool isFiltered : {false, true}) {
        this->m_events.clear();
        const auto source = [&] { return new Source<TypeParam>(this->letters(9), this->m_events); };
        Reference<In> plain(source()), marked(new typename TypeParam::BufferedInput(source(), 16));
        Reference<Out> sink(new Sink<TypeParam>(this->m_events));
        if (isFiltered) {
            plain = new FilterInput(plain.get());
            marked = new FilterInput(marked.get());
            sink = new FilterOutput(sink.get());
        }
        results[isFiltered] = readInAllWays<TypeParam>(*plain) + readInAllWays<TypeParam>(*marked);
        writeInAllWays<TypeParam>(*sink);
        results[isFiltered] += this->m_events;
    }
    EXPECT_EQ(results[1], results[0]);

    FilterInput noSource(nullptr);
    FilterOutput noSink(nullptr);
    EXPECT_EQ(saidBy<IoException>([&] { noSource.reset(); }), "stream closed");
    EXPECT_EQ(saidBy<IoException>([&] { noSink.write(this->text("a"), 1); }), "stream closed");
    noSource.close();
    noSink.close();
}

TYPED_TEST(Twins, ReadInBlocksOfAtLeast16AndPastTheBuffer)
{
    using S = Source<TypeParam>;
    const struct {
        int size; // of the buffer
        int available; // in the source
        std::vector<int> steps; // of the source
        std::vector<int> lengths; // asked for
        const char* results; // units given, or -1
        const char* events;
    } rows[] = {
        {5, 0, {}, {1, 15, 1}, "1 15 1 ", "read(16) read(16) "},
        {16, 0, {}, {40}, "40 ", "read(40) "},
        {16, 0, {}, {1, 40}, "1 15 ", "read(16) available "}, // more would block
        {16, 1, {}, {1, 40}, "1 40 ", "read(16) available read(25) "},
        {16, 1, {16, 4}, {1, 40}, "1 19 ", "read(16) available read(25) "}, // a short read without the buffer ends it
        {16, 1, {16, 4}, {1, 20, 1}, "1 20 1 ", "read(16) available read(16) available read(16) "},
        {16, 0, {S::NOTHING, 3}, {4, 4}, "-1 3 ", "read(16) read(16) available "},
        {64, 0, {}, {0, -1, 60, 10, 10}, "0 0 50 -1 -1 ", "read(64) available read(64) read(64) "},
        {16, 1, {}, {45, 10, 16, 16}, "45 5 -1 -1 ", "read(45) read(16) available read(16) read(16) read(16) "},
    };
    for (const auto& row : rows) {
        this->m_events.clear();
        auto* source = new S(this->letters(50), this->m_events, row.steps);
        source->m_available = row.available;
        const Reference<typename TypeParam::BufferedInput> input(
            new typename TypeParam::BufferedInput(source, row.size));
        std::string results;
        typename TypeParam::Unit units[64];
        for (const int length : row.lengths)
            results += std::to_string(input->read(units, length)) + " ";
        EXPECT_EQ(results, row.results) << row.events;
        EXPECT_EQ(this->m_events, row.events);
    }
}

TYPED_TEST(Twins, GoBackToAMark)
{
    const struct {
        int before; // units read before the mark
        int limit;
        int after; // units read after it
        bool isKept;
    } rows[] = {{0, 100, 90, true}, // the buffer grows
        {3, 17, 16, true}, {3, 4, 13, true}, // within the buffer the limit has no effect
        {3, 4, 14, false}, {3, -1, 14, false}, {16, 1, 1, true}, // set when the buffer was just empty
        {16, 1, 17, false}};
    for (const auto& row : rows) {
        typename TypeParam::BufferedInput input(new Source<TypeParam>(this->letters(120), this->m_events), 16);
        EXPECT_EQ(saidBy<IoException>([&] { input.reset(); }), "stream not marked");
        input.skip(row.before);
        input.mark(row.limit);
        for (int round = 0; round < 2; ++round) { // a mark stays where it is
            input.skip(row.after);
            if (!row.isKept) {
                EXPECT_EQ(saidBy<IoException>([&] { input.reset(); }), "mark invalid");
                continue;
            }
            input.reset();
            EXPECT_EQ(input.read(), 'a' + row.before) << row.limit << ' ' << row.after;
            input.reset();
        }
    }
}

TYPED_TEST(Twins, LoseNothingWhenTheSourceFails)
{
    using S = Source<TypeParam>;
    typename TypeParam::BufferedInput input(
        new S(this->letters(50), this->m_events, {16, S::FAIL, 16, S::FAIL, S::FAIL}), 16);
    input.skip(10);
    input.mark(30);
    EXPECT_EQ(this->readUpTo(input, 6), unitsFrom<typename TypeParam::Unit>('a' + 10, 6));
    EXPECT_EQ(saidBy<TimeoutException>([&] { input.read(); }), "source failed");
    EXPECT_EQ(input.skip(16), 16);
    EXPECT_EQ(saidBy<TimeoutException>([&] { this->readUpTo(input, 16); }), "source failed");
    EXPECT_EQ(saidBy<TimeoutException>([&] { input.skip(1); }), "source failed");
    input.reset();
    EXPECT_EQ(input.read(), 'a' + 10);
    EXPECT_EQ(input.skip(100), 39);
}

TYPED_TEST(Twins, KeepEverythingInOrderWhateverIsAsked)
{
    // Reads of any length, skips, marks and pauses of the source, compared with an index into the data.
    using Unit = typename TypeParam::Unit;
    Random chance;
    const auto upTo = [&](int most) { return chance.below(most + 1); };
    const std::vector<Unit> data = unitsFrom<Unit>(0, 3000);
    for (int round = 0; round < 50; ++round) {
        SCOPED_TRACE(round);
        std::vector<int> steps(2000);
        std::generate(steps.begin(), steps.end(), [&] { return upTo(40); });
        auto* source = new Source<TypeParam>(data, this->m_events, steps);
        const Reference<typename TypeParam::BufferedInput> input(
            new typename TypeParam::BufferedInput(source, upTo(40)));
        int position = 0, mark = 0, limit = 0;
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
    {
        typename TypeParam::BufferedInput input(new Source<TypeParam>(this->letters(50), this->m_events), 16);
        typename TypeParam::BufferedOutput output(new Sink<TypeParam>(this->m_events), 16);
        output.write(this->text("lost"), 4);
        output.close();
        input.close();
        const std::function<void()> operations[]
            = {[&] { input.read(); }, [&] { input.skip(0); }, [&] { input.available(); }, [&] { input.mark(1); },
                [&] { input.reset(); }, [&] { output.flush(); }, [&] { output.write(this->NOTHING, 0); }};
        for (const auto& operation : operations)
            EXPECT_EQ(saidBy<IoException>(operation), "stream closed");
    }
    EXPECT_EQ(this->m_events, "close close gone gone ");
}

TYPED_TEST(Twins, CollectSmallWritesAndFlushOnlyWhenAsked)
{
    const struct {
        int size;
        std::vector<const char*> writes;
        const char* events; // before a flush "|" and after it
    } rows[] = {
        {16, {"0123456789", "abcdefg"}, "write(0123456789) | write(abcdefg) flush gone "},
        {16, {"0123456789", "abcdef", "!"}, "write(0123456789abcdef) | write(!) flush gone "},
        {16, {"0123456789abcdef"}, "write(0123456789abcdef) | flush gone "},
        {3, {"01", "0123456789abcdefgh"}, "write(01) write(0123456789abcdefgh) | flush gone "},
        {-7, {""}, "| flush gone "},
    };
    for (const auto& row : rows) {
        this->m_events.clear();
        {
            typename TypeParam::BufferedOutput output(new Sink<TypeParam>(this->m_events), row.size);
            for (const std::string write : row.writes)
                output.write(this->text(write.c_str()), static_cast<int>(write.size()));
            this->m_events += "| ";
            output.flush();
            output.write(static_cast<typename TypeParam::Unit>('x')); // the destructor does not flush either
        }
        EXPECT_EQ(this->m_events, row.events);
    }
}

TYPED_TEST(Twins, RefuseANullBufferAndASourceThatClaimsTooMuch)
{
    struct Liar : TypeParam::Input {
        std::int32_t read(typename TypeParam::Unit*, std::int32_t length) override { return length + 1; }
    };
    typename TypeParam::Unit units[64];
    typename TypeParam::BufferedInput input(new Liar, 16);
    for (const int length : {1, 32})
        EXPECT_EQ(saidBy<IoException>([&] { input.read(units, length); }), "stream read more than asked");
    typename TypeParam::BufferedOutput output(nullptr, 16);
    EXPECT_EQ(saidBy<IoException>([&] { output.write(this->NOTHING, 1); }), "null buffer");
    EXPECT_EQ(saidBy<IoException>([&] { output.flush(); }), "stream closed");
}

} // namespace
