#include "vx/Str1.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <utility>

namespace vx {
namespace {

/// Strings of every kind that share, write and leave each other, each beside a `std::u16string` of its own.
class Model {
public:
    explicit Model(unsigned seed)
        : m_random(seed)
    {
        m_strings[0] = &m_fixed[0];
        m_strings[1] = &m_fixed[1];
        m_strings[2] = &m_local[0];
        m_strings[3] = &m_local[1];
        for (std::size_t i = 0; i < m_plain.size(); ++i)
            m_strings[4 + i] = &m_plain[i];
    }
    ~Model()
    {
        for (Str1* string : m_strings) // sharers before owners
            string->reset();
    }

    /// One change to one string. Gives its name.
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

        if (text.size() > 600) {
            target.clear();
            text.clear();
            return "clear";
        }
        switch (below(15)) {
        case 0:
            target = other;
            text = otherText;
            return "share";
        case 1:
            target = other.substring(start, start + count);
            text = range;
            return "substring";
        case 2:
            target.copy(other);
            text = otherText;
            return "copy";
        case 3:
            target.copy(other.getData1() + start, count);
            text = range;
            return "copy range";
        case 4:
            target.append(other, count, start);
            text += range;
            return "append string";
        case 5:
            target.append(other.getData1() + start, count);
            text += range;
            return "append range";
        case 6: {
            const auto unit = static_cast<char16_t>(u'A' + below(60));
            const auto repeat = static_cast<int>(below(40));
            target.append(unit, repeat);
            text.append(static_cast<std::size_t>(repeat), unit);
            return "append units";
        }
        case 7:
            target.toLower();
            std::transform(text.begin(), text.end(), text.begin(),
                [](char16_t unit) { return static_cast<char16_t>(unit >= u'A' && unit <= u'Z' ? unit + 32 : unit); });
            return "toLower";
        case 8:
            target.toUpper();
            std::transform(text.begin(), text.end(), text.begin(),
                [](char16_t unit) { return static_cast<char16_t>(unit >= u'a' && unit <= u'z' ? unit - 32 : unit); });
            return "toUpper";
        case 9: {
            const std::size_t less = below(text.size() + 1);
            target.adjustLength(-static_cast<std::int32_t>(less));
            text.resize(text.size() - less);
            return "shorten";
        }
        case 10:
            target.ensureCapacity1(static_cast<std::uint32_t>(below(300)), 0, -1);
            return "ensureCapacity1";
        case 11: {
            Str1::Appendor appendor(target, static_cast<std::int32_t>(below(50)), static_cast<std::int32_t>(below(9)));
            for (std::size_t pieces = below(20); pieces > 0; --pieces) {
                const std::size_t length = below(4);
                appendor.fastAppend(u"abc", static_cast<std::int32_t>(length));
                appendor.fastAppend(u'-');
                text.append(u"abc", length) += u'-';
            }
            return "Appendor";
        }
        case 12: {
            Str1 taken(static_cast<const Str1&>(target));
            target = Str1(other, start, start + count);
            taken = std::move(taken += u'!');
            EXPECT_EQ(taken, text + u'!');
            text = range;
            return "move";
        }
        case 13:
            target += other;
            text += otherText;
            return "+=";
        default:
            target.reset();
            text.clear();
            return "reset";
        }
    }

    /// The first string that is not what it should be, or -1.
    int firstFault() const
    {
        for (std::size_t i = 0; i < m_strings.size(); ++i)
            if (*m_strings[i] != m_texts[i] || m_strings[i]->isEmpty() != (m_strings[i]->getData0() == nullptr))
                return static_cast<int>(i);
        return -1;
    }

private:
    std::size_t below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(m_random); }

    std::mt19937 m_random;
    std::array<std::array<char16_t, 40>, 2> m_arrays {};
    std::array<Str1Fixed<128>, 2> m_fixed;
    std::array<Str1Local, 2> m_local {Str1Local(m_arrays[0].data(), 0, 40), Str1Local(m_arrays[1].data(), 0, 20)};
    std::array<Str1, 4> m_plain;
    std::array<Str1*, 8> m_strings {};
    std::array<std::u16string, 8> m_texts;
};

TEST(Str1, BehavesAsAValueWhoeverSharesItsBuffer)
{
    const unsigned seed = std::random_device()();
    for (unsigned round = 0; round < 20; ++round) {
        Model model(seed + round);
        std::string history;
        for (int i = 0; i < 1000; ++i) {
            history += model.step() + '\n';
            ASSERT_EQ(model.firstFault(), -1)
                << "seed " << seed + round << ", step " << i << ", last steps\n"
                << history.substr(history.size() - std::min<std::size_t>(history.size(), 200));
        }
    }
}

} // namespace
} // namespace vx
