#include "vx/util/PathNormalizer.h"

#include "vx/Exception.h"
#include "vx/util/BufferLocks.h"

#include <iterator>

namespace vx::util {

namespace {

using Machine = PathNormalizer;

/// For each state: the next one after ".", a separator, any other unit, and the end of the text.
constexpr Machine::STATE NEXT[][4] = {
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

constexpr const TransitionRow* findTransition(Machine::STATE from, Machine::STATE to)
{
    for (const TransitionRow& row : TRANSITIONS) {
        if (row.from == from && row.to == to)
            return &row;
    }
    return nullptr;
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
    m_state = STATE_START;
    m_length = 0;
    m_index = 0;
    m_source = text;
    m_source.translate(m_separator == u'/' ? u'\\' : u'/', m_separator);

    // No state holds back more text than was read, so the result is never longer than the source.
    const int length = m_source.getLength();
    String result;
    {
        CharWriteLock target(result, length);
        m_output = target.data();
        for (; m_index <= length; ++m_index) {
            transition(nextState());
            if (m_state == STATE_NAME)
                write(m_source.getCharAt(m_index));
        }
        m_output = nullptr;
        target.setLength(m_length);
    }
    return result;
}

PathNormalizer::STATE PathNormalizer::nextState() const
{
    if (m_index == m_source.getLength())
        return NEXT[m_state][3];
    const char16_t ch = m_source.getCharAt(m_index);
    if (ch == u'.')
        return NEXT[m_state][0];
    return NEXT[m_state][ch == m_separator ? 1 : 2];
}

void PathNormalizer::transition(STATE next)
{
    const TransitionRow* row = findTransition(m_state, next);
    m_state = next;
    if (row == nullptr)
        return;

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
