#include "tests/Random.h"
#include "tests/vx/Common.h"
#include "vx/Str1.h"

#include <array>

namespace vx {
namespace {

/// Strings of every kind, which share, write and stop sharing, each with a `std::u16string` as its model.
class Model {
public:
    ~Model()
    {
        for (Str1* string : m_strings) // strings that share are destroyed before owners
            string->reset();
    }

    /// Makes one change to one string and returns its name.
    std::string step()
    {
        const std::size_t index = below(m_strings.size());
        Str1& target = *m_strings[index];
        std::u16string& text = m_texts[index];
        const std::size_t otherIndex = below(m_strings.size());
        const Str1& other = *m_strings[otherIndex];
        const std::u16string otherText = m_texts[otherIndex];
        const auto start = static_cast<std::int32_t>(below(otherText.size() + 1));
        const auto count = static_cast<std::int32_t>(below(otherText.size() + 1 - static_cast<std::size_t>(start)));
        const std::u16string range = otherText.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(count));

        const auto toCase = [&text](char16_t first, int by) {
            for (char16_t& unit : text)
                unit = static_cast<char16_t>(unit >= first && unit < first + 26 ? unit + by : unit);
        };
        const std::pair<const char*, std::function<void()>> changes[] = {
            {"reset", [&] { target.reset(), text.clear(); }},
            {"clear", [&] { target.clear(), text.clear(); }},
            {"share", [&] { target = other, text = otherText; }},
            {"substring", [&] { target = other.substring(start, start + count), text = range; }},
            {"copy", [&] { target.copy(other), text = otherText; }},
            {"copy range", [&] { target.copy(other.getData1() + start, count), text = range; }},
            {"append string", [&] { target.append(other, count, start), text += range; }},
            {"append range", [&] { target.append(other.getData1() + start, count), text += range; }},
            {"+=", [&] { target += other, text += otherText; }},
            {"append units",
                [&] {
                    const auto unit = static_cast<char16_t>(u'A' + below(60));
                    const std::size_t repeat = below(40);
                    target.append(unit, static_cast<int>(repeat)), text.append(repeat, unit);
                }},
            {"toLower", [&] { target.toLower(), toCase(u'A', 32); }},
            {"toUpper", [&] { target.toUpper(), toCase(u'a', -32); }},
            {"shorten",
                [&] {
                    const std::size_t less = below(text.size() + 1);
                    target.adjustLength(-static_cast<std::int32_t>(less)), text.resize(text.size() - less);
                }},
            {"ensureCapacity1", [&] { target.ensureCapacity1(static_cast<std::uint32_t>(below(300)), 0, -1); }},
            {"Appendor",
                [&] {
                    Str1::Appendor appendor(
                        target, static_cast<std::int32_t>(below(50)), static_cast<std::int32_t>(below(9)));
                    for (std::size_t pieces = below(20); pieces > 0; --pieces) {
                        const std::size_t length = below(4);
                        appendor.fastAppend(u"abc", static_cast<std::int32_t>(length));
                        appendor.fastAppend(u'-');
                        text.append(u"abc", length) += u'-';
                    }
                }},
            {"Appendor of its own text",
                [&] {
                    const std::size_t place = below(text.size() + 1), length = below(text.size() + 1 - place);
                    Str1::Appendor(target, 0, 0)
                        .fastAppend(target.getData1() + place, static_cast<std::int32_t>(length));
                    text += text.substr(place, length);
                }},
            {"move",
                [&] {
                    Str1 taken(static_cast<const Str1&>(target));
                    target = Str1(other, start, start + count);
                    taken = std::move(taken += u'!');
                    EXPECT_EQ(taken, text + u'!');
                    text = range;
                }},
        };
        const auto& [name, change] = changes[text.size() > 600 ? 1 : below(std::size(changes))];
        change();
        return name;
    }

    int firstFault() const
    {
        for (std::size_t i = 0; i < m_strings.size(); ++i)
            if (*m_strings[i] != m_texts[i] || m_strings[i]->isEmpty() != (m_strings[i]->getData0() == nullptr))
                return static_cast<int>(i);
        return -1;
    }

private:
    std::size_t below(std::size_t end) { return m_random() % end; }

    Random m_random;
    std::array<std::array<char16_t, 40>, 2> m_arrays {};
    std::array<Str1Fixed<128>, 2> m_fixed;
    std::array<Str1Local, 2> m_local {Str1Local(m_arrays[0].data(), 0, 40), Str1Local(m_arrays[1].data(), 0, 20)};
    std::array<Str1, 4> m_plain;
    std::array<Str1*, 8> m_strings {
        &m_fixed[0], &m_fixed[1], &m_local[0], &m_local[1], &m_plain[0], &m_plain[1], &m_plain[2], &m_plain[3]};
    std::array<std::u16string, 8> m_texts;
};

TEST(Str1, BehavesAsAValueWhoeverSharesItsBuffer)
{
    for (int round = 0; round < 20; ++round) {
        Model model;
        std::string history;
        for (int i = 0; i < 1000; ++i) {
            history += model.step() + '\n';
            ASSERT_EQ(model.firstFault(), -1)
                << "step " << i << ", last steps\n"
                << history.substr(history.size() - std::min<std::size_t>(history.size(), 200));
        }
    }
}

} // namespace
} // namespace vx
