#include "Producer.h"

#include "../FailureText.h"

#include <vx/Result.h>
#include <vx/vorb/Component.h>

#include <algorithm>
#include <new>
#include <utility>

namespace vx::components {

namespace {

constexpr std::chrono::seconds PAUSE(1); // before failed messages are sent again

/// Whether sending the same message again cannot succeed.
bool isFinal(rd_kafka_resp_err_t error)
{
    return error == RD_KAFKA_RESP_ERR_MSG_SIZE_TOO_LARGE || error == RD_KAFKA_RESP_ERR_INVALID_RECORD;
}

std::uint64_t numberOf(const rd_kafka_message_t& message)
{
    return reinterpret_cast<std::uint64_t>(message._private);
}

} // namespace

KafkaProducer::KafkaProducer(const KafkaSettings& settings)
    : m_settings(settings)
{
    open();
}

KafkaProducer::~KafkaProducer() noexcept
{
    rd_kafka_purge(m_client->get(), RD_KAFKA_PURGE_F_QUEUE | RD_KAFKA_PURGE_F_INFLIGHT | RD_KAFKA_PURGE_F_NON_BLOCKING);
}

const vorb::InterfaceData* KafkaProducer::GetComIntfMap()
{
    static const vorb::InterfaceData map[] = {vorb::viewRow<KafkaProducer, IVXKafkaProducer>(),
        vorb::viewRow<KafkaProducer, vorb::IVXFailureText>(), vorb::forwardRow<Object>(), vorb::endRow()};
    return map;
}

void KafkaProducer::open()
{
    Conf conf = m_settings.makeConf();
    setOption(conf.get(), "acks", "all");
    setOption(conf.get(), "enable.idempotence", "true");
    setOption(conf.get(), "message.timeout.ms", "0"); // the program decides how long it waits
    setOption(conf.get(), "topic.metadata.propagation.max.ms", "5000");
    setOption(conf.get(), "queue.buffering.max.messages", "0"); // the limits are those of this class
    setOption(conf.get(), "queue.buffering.max.kbytes", "2147483647");
    setOption(conf.get(), "compression.codec", m_settings.compression);
    rd_kafka_conf_set_dr_msg_cb(conf.get(), onDelivery);
    m_client = std::make_unique<KafkaClient>(RD_KAFKA_PRODUCER, m_settings, std::move(conf), this);
    watch();
}

void KafkaProducer::watch()
{
    constexpr std::uint64_t ONE = 1; // what an eventfd takes
    if (m_wake < 0)
        return;
    rd_kafka_queue_t* const queue = rd_kafka_queue_get_main(m_client->get());
    rd_kafka_queue_io_event_enable(queue, m_wake, &ONE, sizeof ONE);
    rd_kafka_queue_destroy(queue);
}

std::int32_t KafkaProducer::Send(const KafkaMessage* message)
{
    if (message == nullptr || (message->value == nullptr && message->valueLength > 0))
        return RESULT_POINTER;
    return withFailureText([&]() -> std::int32_t {
        const auto size = static_cast<std::size_t>(message->valueLength);
        const bool isAlone = m_slots.empty(); // then it has room in any case
        if (!m_failed.empty() || static_cast<std::int64_t>(m_slots.size()) >= m_settings.queueMessages
            || (!isAlone && m_bytes + message->valueLength > m_settings.queueBytes))
            return RESULT_NOT_AVAILABLE;
        m_slots.push_back({size});
        m_bytes += message->valueLength;
        if (!produce(m_first + m_slots.size() - 1, *message)) {
            m_slots.pop_back();
            m_bytes -= message->valueLength;
            return RESULT_NOT_AVAILABLE;
        }
        return RESULT_OK;
    });
}

bool KafkaProducer::produce(std::uint64_t number, const KafkaMessage& message)
{
    const int result = rd_kafka_produce(m_client->topic(), RD_KAFKA_PARTITION_UA, RD_KAFKA_MSG_F_COPY,
        const_cast<signed char*>(message.value), static_cast<std::size_t>(message.valueLength), message.key,
        static_cast<std::size_t>(message.key != nullptr ? message.keyLength : 0), reinterpret_cast<void*>(number));
    if (result == 0) {
        ++m_open;
        return true;
    }
    const rd_kafka_resp_err_t error = rd_kafka_last_error();
    if (!isFinal(error)) { // the topic is unknown, or the client is broken
        if (!m_client->isBroken() && error != RD_KAFKA_RESP_ERR__QUEUE_FULL)
            m_client->setTrouble(textOf(error, m_settings));
        return false;
    }
    finish(number, error);
    return true;
}

void KafkaProducer::onDelivery(rd_kafka_t*, const rd_kafka_message_t* message, void* client)
{
    auto& self = *static_cast<KafkaProducer*>(static_cast<KafkaClient*>(client)->owner());
    try {
        self.take(*message);
    } catch (const std::bad_alloc&) { // it cannot be kept for another try
        Slot& slot = self.m_slots[static_cast<std::size_t>(numberOf(*message) - self.m_first)];
        slot.result = RESULT_OUT_OF_MEMORY;
        if (!std::exchange(slot.isDone, true))
            ++self.m_done;
    }
}

void KafkaProducer::take(const rd_kafka_message_t& message)
{
    const std::uint64_t number = numberOf(message);
    --m_open;
    if (message.err == RD_KAFKA_RESP_ERR_NO_ERROR || isFinal(message.err)) {
        if (message.err == RD_KAFKA_RESP_ERR_NO_ERROR && m_failed.empty())
            m_client->setTrouble(String());
        finish(number, message.err);
        return;
    }
    const auto bytes = [](const void* start, std::size_t size) {
        return start != nullptr ? std::string(static_cast<const char*>(start), size) : std::string();
    };
    m_failed.push_back(
        {number, message.key != nullptr, bytes(message.key, message.key_len), bytes(message.payload, message.len)});
    m_lastFailure = Clock::now();
    if (m_failed.size() == 1) // those after it have to come back too, so that the order stays
        rd_kafka_purge(m_client->get(), RD_KAFKA_PURGE_F_QUEUE | RD_KAFKA_PURGE_F_NON_BLOCKING);
    if (!m_client->isBroken() && message.err != RD_KAFKA_RESP_ERR__PURGE_QUEUE)
        m_client->setTrouble(textOf(message.err, m_settings));
}

void KafkaProducer::finish(std::uint64_t number, rd_kafka_resp_err_t error)
{
    Slot& slot = m_slots[static_cast<std::size_t>(number - m_first)];
    slot.isDone = true;
    ++m_done;
    if (error == RD_KAFKA_RESP_ERR_NO_ERROR)
        return;
    slot.result = resultOf(error);
    slot.failure = textOf(error, m_settings, slot.size);
}

void KafkaProducer::serve(int milliseconds)
{
    rd_kafka_poll(m_client->get(), milliseconds);
    if (m_open == 0 && !m_failed.empty() && Clock::now() - m_lastFailure >= PAUSE)
        sendAgain();
}

/// In their order. A broken client is replaced first.
void KafkaProducer::sendAgain()
{
    if (m_client->isBroken())
        open();
    std::ranges::sort(m_failed, {}, &Failed::number);
    const auto bytes = [](const std::string& text) { return reinterpret_cast<const signed char*>(text.data()); };
    auto next = m_failed.begin();
    for (; next != m_failed.end(); ++next) {
        if (!produce(next->number,
                {next->hasKey ? bytes(next->key) : nullptr, bytes(next->value),
                    static_cast<std::int32_t>(next->key.size()), static_cast<std::int32_t>(next->value.size())}))
            break;
    }
    if (next == m_failed.begin())
        m_lastFailure = Clock::now();
    m_failed.erase(m_failed.begin(), next);
}

std::int32_t KafkaProducer::TakeReports(std::int32_t* results, std::int32_t* count, std::int32_t milliseconds)
{
    if (results == nullptr || count == nullptr)
        return RESULT_POINTER;
    const std::int32_t room = std::exchange(*count, 0);
    clearFailureText();
    return vorb::atBoundary([&] {
        serve(0);
        if (room > 0 && (m_slots.empty() || !m_slots.front().isDone) && milliseconds > 0)
            serve(milliseconds);
        bool hasFailed = false;
        while (*count < room && !m_slots.empty() && m_slots.front().isDone) {
            const Slot& slot = m_slots.front();
            if (slot.result < 0 && !std::exchange(hasFailed, true))
                keepFailureText(ResultException(slot.result, slot.failure));
            results[(*count)++] = slot.result;
            m_bytes -= static_cast<std::int64_t>(slot.size);
            m_slots.pop_front();
            ++m_first;
            --m_done;
        }
    });
}

std::int32_t KafkaProducer::SetWake(std::int32_t descriptor)
{
    return vorb::atBoundary([&] {
        m_wake = descriptor;
        watch();
    });
}

std::int32_t KafkaProducer::Flush(std::int32_t milliseconds)
{
    return withFailureText([&]() -> std::int32_t {
        constexpr std::int64_t SLICE = 100;
        const Clock::time_point end = Clock::now() + std::chrono::milliseconds(milliseconds);
        for (;;) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
            serve(static_cast<int>(m_done < m_slots.size() ? std::clamp<std::int64_t>(left, 0, SLICE) : 0));
            if (m_done == m_slots.size())
                return RESULT_OK;
            if (left <= 0)
                throw ResultException(RESULT_TIMED_OUT,
                    m_client->trouble().isEmpty() ? textOf(RD_KAFKA_RESP_ERR__TIMED_OUT, m_settings)
                                                  : m_client->trouble());
        }
    });
}

std::int32_t KafkaProducer::GetPending(std::int32_t* count)
{
    return vorb::atBoundary(count, [&] { return static_cast<std::int32_t>(m_slots.size()); });
}

std::int32_t KafkaProducer::GetTrouble(IVXCharBuffer* text)
{
    return storeText(text, m_client->trouble());
}

std::int32_t KafkaProducer::GetFailureText(IVXCharBuffer* text)
{
    return storeFailureText(text);
}

} // namespace vx::components
