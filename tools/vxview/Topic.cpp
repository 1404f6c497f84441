#include "Topic.h"

#include <cerrno>
#include <chrono>

namespace vxview {

using namespace vxtools;
using vx::components::IVXKafkaConsumer;
using vx::components::KafkaMessage;

Topic::Topic(const std::string& address, bool follows)
    : m_address(address)
    , m_follows(follows)
    , m_consumer(m_address.openConsumer())
{
}

std::size_t Topic::read(char* bytes, std::size_t size)
{
    std::size_t count = 0;
    while (count < size) {
        if (m_begin == m_line.size() && (count > 0 || !fetch()))
            break;
        const std::size_t copied = m_line.copy(bytes + count, size - count, m_begin);
        m_begin += copied;
        count += copied;
    }
    return count;
}

/// Gets the next message, which may take long until the end is reached for the first time.
bool Topic::fetch()
{
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::seconds PATIENCE(30); // with brokers that were reached at the start
    constexpr std::int32_t SLICE = 1000;
    const Clock::time_point end = Clock::now() + PATIENCE;
    for (;;) {
        KafkaMessage message {};
        std::int32_t state = IVXKafkaConsumer::NOTHING;
        const std::int32_t result = m_consumer->Read(&message, &state, m_wasAtEnd ? 0 : SLICE);
        if (result < 0)
            throw Failure(m_address.name(), failureOf(*m_consumer, result));
        if (state == IVXKafkaConsumer::MESSAGE) {
            m_line.assign(reinterpret_cast<const char*>(message.value), static_cast<std::size_t>(message.valueLength));
            if (!m_line.ends_with('\n'))
                m_line += '\n';
            m_begin = 0;
            return true;
        }
        m_wasAtEnd = m_wasAtEnd || state == IVXKafkaConsumer::END;
        if (state == IVXKafkaConsumer::END || (m_follows && m_wasAtEnd))
            return false;
        if (Clock::now() >= end) {
            const std::string trouble = textFrom([this](IVXCharBuffer* text) { return m_consumer->GetTrouble(text); });
            throw Failure(m_address.name(), trouble.empty() ? textOfError(ETIMEDOUT) : trouble);
        }
    }
}

} // namespace vxview
