#include "vx/io/AlphaNumOutputStream.h"

#include "vx/io/detail/AlphaNum.h"
#include "vx/io/detail/StreamChecks.h"

namespace vx::io {

namespace {

constexpr int MASK = 31;

/// The shifts for a byte and the previous one in each step: a byte completes one character of its group, and may fill a
/// second.
struct Step {
    int kept; ///< left shift of the bits of the previous byte, which begin this character
    int rest; ///< right shift of this byte, which ends the character
    int whole; ///< right shift for one more character; -1 if there is none
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
    sink().flush(); // if it fails and is tried again, no second character is added
}

} // namespace vx::io
