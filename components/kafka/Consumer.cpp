#include "Consumer.h"

#include "../FailureText.h"

#include <vx/Result.h>
#include <vx/vorb/Component.h>

#include <algorithm>
#include <limits>

namespace vx::components {

namespace {

Conf confOf(const KafkaSettings& settings)
{
    Conf conf = settings.makeConf();
    setOption(conf.get(), "enable.partition.eof", "true");
    setOption(conf.get(), "queued.max.messages.kbytes", "16384");
    setOption(conf.get(), "auto.offset.reset", "earliest"); // the oldest messages may be removed before they are read
    return conf;
}

} // namespace

KafkaConsumer::KafkaConsumer(const KafkaSettings& settings)
    : m_client(RD_KAFKA_CONSUMER, settings, confOf(settings))
    , m_queue(rd_kafka_queue_new(m_client.get()))
    , m_isAtEnd(static_cast<std::size_t>(m_client.countPartitions()))
{
    for (std::size_t partition = 0; partition < m_isAtEnd.size(); ++partition) {
        if (rd_kafka_consume_start_queue(
                m_client.topic(), static_cast<std::int32_t>(partition), RD_KAFKA_OFFSET_BEGINNING, m_queue.get())
            != 0) {
            const rd_kafka_resp_err_t error = rd_kafka_last_error();
            throw ResultException(resultOf(error), textOf(error, settings));
        }
    }
}

KafkaConsumer::~KafkaConsumer() noexcept
{
    m_message.reset();
    for (std::size_t partition = 0; partition < m_isAtEnd.size(); ++partition)
        rd_kafka_consume_stop(m_client.topic(), static_cast<std::int32_t>(partition));
}

const vorb::InterfaceData* KafkaConsumer::GetComIntfMap()
{
    static const vorb::InterfaceData map[] = {vorb::viewRow<KafkaConsumer, IVXKafkaConsumer>(),
        vorb::viewRow<KafkaConsumer, vorb::IVXFailureText>(), vorb::forwardRow<Object>(), vorb::endRow()};
    return map;
}

std::int32_t KafkaConsumer::Read(KafkaMessage* message, std::int32_t* state, std::int32_t milliseconds)
{
    if (message == nullptr || state == nullptr)
        return RESULT_POINTER;
    *message = {};
    *state = NOTHING;
    return withFailureText([&]() -> std::int32_t {
        m_message.reset(rd_kafka_consume_queue(m_queue.get(), milliseconds));
        rd_kafka_poll(m_client.get(), 0); // learns about failures
        if (m_message == nullptr) {
            *state = isAtEnd() ? END : NOTHING;
            return RESULT_OK;
        }
        const auto partition = static_cast<std::size_t>(m_message->partition);
        switch (m_message->err) {
        case RD_KAFKA_RESP_ERR_NO_ERROR:
            break;
        case RD_KAFKA_RESP_ERR__PARTITION_EOF:
            m_isAtEnd.at(partition) = true;
            *state = isAtEnd() ? END : NOTHING;
            return RESULT_OK;
        case RD_KAFKA_RESP_ERR__TRANSPORT:
        case RD_KAFKA_RESP_ERR__ALL_BROKERS_DOWN:
        case RD_KAFKA_RESP_ERR__TIMED_OUT:
        case RD_KAFKA_RESP_ERR__RESOLVE: // they will come back
            return RESULT_OK;
        default:
            throw ResultException(resultOf(m_message->err), textOf(m_message->err, m_client.settings()));
        }
        if (m_message->len > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
            throw ResultException(RESULT_INVALID_ARGUMENT, u"a message is too large");
        m_isAtEnd.at(partition) = false;
        m_client.setTrouble(String());
        *message
            = {static_cast<const signed char*>(m_message->key), static_cast<const signed char*>(m_message->payload),
                static_cast<std::int32_t>(m_message->key_len), static_cast<std::int32_t>(m_message->len)};
        *state = MESSAGE;
        return RESULT_OK;
    });
}

bool KafkaConsumer::isAtEnd() const
{
    return std::ranges::find(m_isAtEnd, false) == m_isAtEnd.end();
}

std::int32_t KafkaConsumer::GetTrouble(IVXCharBuffer* text)
{
    return storeText(text, m_client.trouble());
}

std::int32_t KafkaConsumer::GetFailureText(IVXCharBuffer* text)
{
    return storeFailureText(text);
}

} // namespace vx::components
