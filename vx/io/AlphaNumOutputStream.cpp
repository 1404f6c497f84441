#include "vx/io/AlphaNumOutputStream.h"

#include "vx/io/detail/AlphaNum.h"
#include "vx/io/detail/StreamChecks.h"

namespace vx::io {

namespace {

constexpr int MASK = 31;

/// What a byte does in the step of each character of a group that begins in it or ends what the byte before left.
struct Step {
    int kept; ///< shift to the left of the bits of the byte before, which begin this character
    int rest; ///< shift to the right of this byte, which ends it
    int whole; ///< shift to the right for one more character; -1 where there is none
    int next;
};
constexpr Step STEPS[] = {
    {5, 3, -1, 1},
    {2, 6, 1, 3},
    {},
    {4, 4, -1, 4},
    {1, 7, 2, 6},
    {},
    {3, 5, 0, 0},
};

} // namespace

AlphaNumOutputStream::AlphaNumOutputStream(OutputStream* sink, const char16_t* alphabet)
    : FilterOutputStream(sink)
    , m_alphabet(detail::alphabetOrDefault(alphabet))
{
}

void AlphaNumOutputStream::write(const signed char* bytes, std::int32_t length)
{
    if (length < 1)
        return;
    detail::requireUnits(bytes);
    OutputStream& out = sink();
    const char16_t* const characters = m_alphabet.getData();
    const auto emit = [&](int value) { out.write(static_cast<signed char>(characters[value & MASK])); };
    for (std::int32_t index = 0; index < length; ++index) {
        const auto byte = static_cast<std::uint8_t>(bytes[index]);
        const Step& step = STEPS[m_step];
        if (!m_isFirstOut)
            emit(m_previous << step.kept | byte >> step.rest);
        if (step.whole >= 0) {
            m_isFirstOut = true;
            emit(byte >> step.whole);
            m_isFirstOut = false;
        }
        m_previous = byte;
        m_step = step.next;
    }
}

void AlphaNumOutputStream::write(signed char byte)
{
    write(&byte, 1);
}

void AlphaNumOutputStream::flush()
{
    if (m_step != 0 && !m_isFirstOut)
        sink().write(static_cast<signed char>(m_alphabet.getData()[m_previous << STEPS[m_step].kept & MASK]));
    m_step = 0;
    m_previous = 0;
    m_isFirstOut = false;
    sink().flush(); // one that fails and is tried again adds no second character
}

} // namespace vx::io
