#include "vx/util/PathNormalizer.h"

#include "vx/Exception.h"
#include "vx/detail/StringLocks.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace vx::util {

namespace {

using Machine = PathNormalizer;

enum Event { AT_DOT, AT_SEPARATOR, AT_OTHER, AT_END };

/// For each state, the next one by what comes in the text.
constexpr Machine::STATE NEXT[][AT_END + 1] = {
    {Machine::STATE_LEAD_DOT, Machine::STATE_SLASH, Machine::STATE_NAME, Machine::STATE_END}, // START
    {Machine::STATE_NAME, Machine::STATE_SLASH, Machine::STATE_NAME, Machine::STATE_END}, // NAME
    {Machine::STATE_SLASH_DOT, Machine::STATE_SLASH, Machine::STATE_NAME, Machine::STATE_END}, // SLASH
    {Machine::STATE_SLASH_DOT_DOT, Machine::STATE_SLASH, Machine::STATE_NAME, Machine::STATE_END}, // SLASH_DOT
    {Machine::STATE_NAME, Machine::STATE_SLASH, Machine::STATE_NAME, Machine::STATE_END}, // SLASH_DOT_DOT
    {Machine::STATE_LEAD_DOT_DOT, Machine::STATE_LEAD_DOT_SLASH, Machine::STATE_NAME, Machine::STATE_END}, // LEAD_DOT
    {Machine::STATE_LEAD_DOT, Machine::STATE_LEAD_DOT_SLASH, Machine::STATE_NAME, Machine::STATE_END}, // LEAD_DOT_SLASH
    {Machine::STATE_NAME, Machine::STATE_LEAD_UP, Machine::STATE_NAME, Machine::STATE_END}, // LEAD_DOT_DOT
    {Machine::STATE_LEAD_DOT, Machine::STATE_LEAD_UP, Machine::STATE_NAME, Machine::STATE_END}, // LEAD_UP
};
static_assert(std::size(NEXT) == Machine::STATE_END, "every state but the last has its row");

enum class Action {
    WriteHeld, ///< the text that is held back, from the row
    DropName, ///< remove the last name and its separator
    DropToSeparator, ///< remove everything after the last separator
    EndLeadDot
};

struct TransitionRow {
    Machine::STATE from;
    Machine::STATE to;
    Action action;
    const char* held; ///< "/" means the separator
};

/// Any other pair writes nothing.
constexpr TransitionRow TRANSITIONS[] = {
    {Machine::STATE_SLASH, Machine::STATE_NAME, Action::WriteHeld, "/"},
    {Machine::STATE_SLASH_DOT, Machine::STATE_NAME, Action::WriteHeld, "/."},
    {Machine::STATE_SLASH_DOT_DOT, Machine::STATE_NAME, Action::WriteHeld, "/.."}, // a name such as "..."
    {Machine::STATE_LEAD_DOT, Machine::STATE_NAME, Action::WriteHeld, "."},
    {Machine::STATE_LEAD_DOT_DOT, Machine::STATE_NAME, Action::WriteHeld, ".."},
    {Machine::STATE_SLASH_DOT_DOT, Machine::STATE_SLASH, Action::DropName, ""},
    {Machine::STATE_LEAD_DOT_DOT, Machine::STATE_LEAD_UP, Action::WriteHeld, "../"},
    {Machine::STATE_SLASH, Machine::STATE_END, Action::WriteHeld, "/"},
    {Machine::STATE_SLASH_DOT, Machine::STATE_END, Action::WriteHeld, "/"},
    {Machine::STATE_SLASH_DOT_DOT, Machine::STATE_END, Action::DropToSeparator, ""},
    {Machine::STATE_LEAD_DOT, Machine::STATE_END, Action::EndLeadDot, ""},
    {Machine::STATE_LEAD_DOT_SLASH, Machine::STATE_END, Action::WriteHeld, "./"},
    {Machine::STATE_LEAD_DOT_DOT, Machine::STATE_END, Action::WriteHeld, ".."},
};

constexpr std::uint8_t NO_ROW = std::size(TRANSITIONS);

/// The index of the row for each pair of states.
constexpr auto ROWS = [] {
    std::array<std::array<std::uint8_t, Machine::STATE_END + 1>, Machine::STATE_END> rows {};
    for (auto& ofState : rows)
        ofState.fill(NO_ROW);
    std::uint8_t index = 0;
    for (const TransitionRow& row : TRANSITIONS)
        rows[row.from][row.to] = index++;
    return rows;
}();

constexpr bool isSlash(char16_t unit) noexcept
{
    return unit == u'/' || unit == u'\\';
}

} // namespace

PathNormalizer::PathNormalizer(SLASH_TYPE type)
{
    setSlashType(type);
}

PathNormalizer::~PathNormalizer() noexcept = default;

void PathNormalizer::setSlashType(SLASH_TYPE type)
{
    switch (type) {
    case SLASH_FORWARD:
        m_separator = u'/';
        return;
    case SLASH_SYSTEM:
    case SLASH_BACKWARD:
        m_separator = u'\\';
        return;
    }
    throw Exception(u"Invalid slash type specified.");
}

String PathNormalizer::normalize(const String& text)
{
    const vx::detail::StringReadLock source(text);
    String result;
    if (source.length() > 0) {
        vx::detail::StringWriteLock target(result, source.length());
        target.setLength(run({source.data(), static_cast<std::size_t>(source.length())}, target.data()));
    }
    return result;
}

int PathNormalizer::run(std::u16string_view source, char16_t* output) noexcept
{
    m_state = STATE_START;
    m_source = source;
    m_output = output;
    m_length = 0;
    m_index = 0;

    // No state holds back more text than was read, so what is written never passes what is still to be read.
    const auto length = static_cast<int>(source.size());
    for (; m_index < length; ++m_index) {
        transition(nextState());
        if (m_state != STATE_NAME)
            continue;
        write(source[static_cast<std::size_t>(m_index)]);
        for (; m_index + 1 < length && !isSlash(source[static_cast<std::size_t>(m_index) + 1]); ++m_index)
            write(source[static_cast<std::size_t>(m_index) + 1]);
    }
    transition(nextState());
    return m_length;
}

PathNormalizer::STATE PathNormalizer::nextState() const noexcept
{
    const auto index = static_cast<std::size_t>(m_index);
    int event = AT_END;
    if (index < m_source.size())
        event = m_source[index] == u'.' ? AT_DOT : isSlash(m_source[index]) ? AT_SEPARATOR : AT_OTHER;
    return NEXT[m_state][event]; // NOLINT(clang-analyzer-core.uninitialized.UndefReturn): never after STATE_END
}

void PathNormalizer::transition(STATE next) noexcept
{
    const std::uint8_t index = ROWS[m_state][next];
    m_state = next;
    if (index == NO_ROW)
        return;

    const TransitionRow* const row = &TRANSITIONS[index];
    const char* held = row->held;
    switch (row->action) {
    case Action::WriteHeld:
        break;
    case Action::DropName:
        while (m_length > 0 && m_output[--m_length] != m_separator) { }
        if (m_length == 0)
            m_state = STATE_START;
        break;
    case Action::DropToSeparator:
        while (m_length > 0 && m_output[m_length - 1] != m_separator)
            --m_length;
        break;
    case Action::EndLeadDot:
        if (m_index == 1)
            held = ".";
        else if (m_length == 0)
            held = "./";
        break;
    }
    for (; *held != 0; ++held)
        write(*held == '/' ? m_separator : static_cast<char16_t>(*held));
}

} // namespace vx::util
