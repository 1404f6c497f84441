#include "Client.h"

#include <vx/Exception.h>
#include <vx/Result.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <new>
#include <string>
#include <string_view>

namespace vx::components {

namespace {

String fromUtf8(std::string_view text)
{
    return String(text);
}

struct ErrorRow {
    rd_kafka_resp_err_t error;
    std::int32_t result;
    const char16_t* text; ///< about the topic
};

constexpr ErrorRow ERRORS[] = {
    {RD_KAFKA_RESP_ERR__UNKNOWN_TOPIC, RESULT_NOT_FOUND, u"does not exist"},
    {RD_KAFKA_RESP_ERR_UNKNOWN_TOPIC_OR_PART, RESULT_NOT_FOUND, u"does not exist"},
    {RD_KAFKA_RESP_ERR__UNKNOWN_PARTITION, RESULT_NOT_FOUND, u"has lost a partition"},
    {RD_KAFKA_RESP_ERR_TOPIC_EXCEPTION, RESULT_INVALID_ARGUMENT, u"is no valid name"},
    {RD_KAFKA_RESP_ERR_TOPIC_AUTHORIZATION_FAILED, RESULT_ACCESS_DENIED, u"this user may not use it"},
    {RD_KAFKA_RESP_ERR_CLUSTER_AUTHORIZATION_FAILED, RESULT_ACCESS_DENIED, u"this user may not use the cluster"},
    {RD_KAFKA_RESP_ERR__AUTHENTICATION, RESULT_ACCESS_DENIED, u"the brokers refuse the user"},
    {RD_KAFKA_RESP_ERR_SASL_AUTHENTICATION_FAILED, RESULT_ACCESS_DENIED, u"the brokers refuse the user"},
    {RD_KAFKA_RESP_ERR_MSG_SIZE_TOO_LARGE, RESULT_INVALID_ARGUMENT, u"a message is larger than it accepts"},
    {RD_KAFKA_RESP_ERR_INVALID_RECORD, RESULT_INVALID_ARGUMENT, u"does not accept the form of a message"},
    {RD_KAFKA_RESP_ERR__TIMED_OUT, RESULT_TIMED_OUT, u"no broker answers in time"},
    {RD_KAFKA_RESP_ERR__TRANSPORT, RESULT_TIMED_OUT, u"no broker can be reached"},
    {RD_KAFKA_RESP_ERR__ALL_BROKERS_DOWN, RESULT_TIMED_OUT, u"no broker can be reached"},
    {RD_KAFKA_RESP_ERR_NOT_ENOUGH_REPLICAS, RESULT_TIMED_OUT, u"too few of its replicas work"},
    {RD_KAFKA_RESP_ERR_NOT_ENOUGH_REPLICAS_AFTER_APPEND, RESULT_TIMED_OUT, u"too few of its replicas work"},
    {RD_KAFKA_RESP_ERR_LEADER_NOT_AVAILABLE, RESULT_TIMED_OUT, u"has no leader at the moment"},
};

const ErrorRow* find(rd_kafka_resp_err_t error)
{
    const ErrorRow* const row = std::ranges::find(ERRORS, error, &ErrorRow::error);
    return row != std::end(ERRORS) ? row : nullptr;
}

} // namespace

String textOf(rd_kafka_resp_err_t error, const KafkaSettings& settings, std::size_t size)
{
    const ErrorRow* const row = find(error);
    String text = u"topic " + fromUtf8(settings.topic) + u" at " + fromUtf8(settings.brokers) + u": "
        + (row != nullptr ? String(row->text) : fromUtf8(rd_kafka_err2str(error)));
    if (size > 0)
        text.append(u" (" + fromUtf8(std::to_string(size)) + u" bytes)");
    return text;
}

std::int32_t resultOf(rd_kafka_resp_err_t error)
{
    const ErrorRow* const row = find(error);
    return row != nullptr ? row->result : RESULT_FAIL;
}

KafkaClient::KafkaClient(rd_kafka_type_t type, const KafkaSettings& settings, Conf conf, void* owner)
    : m_settings(settings)
    , m_owner(owner)
{
    rd_kafka_conf_set_opaque(conf.get(), this);
    rd_kafka_conf_set_error_cb(conf.get(), onError);
    char why[512];
    m_handle.reset(rd_kafka_new(type, conf.get(), why, sizeof why));
    if (m_handle == nullptr)
        throw ResultException(RESULT_INVALID_ARGUMENT, fromUtf8(why));
    static_cast<void>(conf.release()); // the handle owns it now
    m_topic.reset(rd_kafka_topic_new(m_handle.get(), settings.topic.c_str(), nullptr));
    if (m_topic == nullptr)
        throw ResultException(RESULT_INVALID_ARGUMENT, textOf(rd_kafka_last_error(), settings));
}

std::int32_t KafkaClient::countPartitions()
{
    using Clock = std::chrono::steady_clock;
    constexpr std::int64_t SLICE = 250; // milliseconds, after which it looks whether waiting is of any use
    constexpr int PAUSE = 20;
    constexpr std::chrono::seconds PATIENCE(2); // a host may have further addresses to try
    const Clock::time_point start = Clock::now();
    const Clock::time_point end = start + std::chrono::milliseconds(m_settings.timeout);
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        const rd_kafka_metadata_t* found = nullptr;
        rd_kafka_resp_err_t error = rd_kafka_metadata(
            m_handle.get(), 0, m_topic.get(), &found, static_cast<int>(std::clamp<std::int64_t>(left, 1, SLICE)));
        const std::unique_ptr<const rd_kafka_metadata_t, KafkaReleaser<rd_kafka_metadata_destroy>> metadata(found);
        if (error == RD_KAFKA_RESP_ERR_NO_ERROR) {
            const rd_kafka_metadata_topic_t* const topic = metadata->topic_cnt > 0 ? metadata->topics : nullptr;
            error = topic != nullptr ? topic->err : RD_KAFKA_RESP_ERR_UNKNOWN_TOPIC_OR_PART;
            if (error == RD_KAFKA_RESP_ERR_NO_ERROR && topic->partition_cnt > 0) {
                m_trouble = String();
                return topic->partition_cnt;
            }
            // A topic that is being created has no leader for a moment.
            if (error != RD_KAFKA_RESP_ERR_LEADER_NOT_AVAILABLE && error != RD_KAFKA_RESP_ERR_NO_ERROR)
                throw ResultException(resultOf(error), textOf(error, m_settings));
        }
        rd_kafka_poll(m_handle.get(), PAUSE); // calls `onError`
        if (m_refusal < 0 || (!m_trouble.isEmpty() && Clock::now() - start >= PATIENCE))
            throw ResultException(m_refusal < 0 ? m_refusal : RESULT_TIMED_OUT, m_trouble);
        if (left <= 0)
            throw ResultException(RESULT_TIMED_OUT, textOf(RD_KAFKA_RESP_ERR__TIMED_OUT, m_settings));
    }
}

void KafkaClient::onError(rd_kafka_t*, int error, const char* reason, void* self)
{
    try {
        static_cast<KafkaClient*>(self)->takeError(static_cast<rd_kafka_resp_err_t>(error), reason);
    } catch (const std::bad_alloc&) { // without a text
    }
}

/// Single brokers may be away without a consequence. So their reasons only explain that all are.
void KafkaClient::takeError(rd_kafka_resp_err_t error, const char* reason)
{
    const auto tell = [&](const String& why) {
        m_trouble = textOf(error, m_settings) + (why.isEmpty() ? why : u" (" + why + u")");
    };
    switch (error) {
    case RD_KAFKA_RESP_ERR__TRANSPORT:
    case RD_KAFKA_RESP_ERR__RESOLVE:
    case RD_KAFKA_RESP_ERR__TIMED_OUT:
        m_lastReason = fromUtf8(reason);
        break;
    case RD_KAFKA_RESP_ERR__ALL_BROKERS_DOWN:
        if (m_refusal == 0)
            tell(m_lastReason);
        break;
    case RD_KAFKA_RESP_ERR__FATAL: {
        char why[512];
        error = rd_kafka_fatal_error(m_handle.get(), why, sizeof why);
        tell(fromUtf8(why));
        m_isBroken = true;
        break;
    }
    case RD_KAFKA_RESP_ERR__AUTHENTICATION:
    case RD_KAFKA_RESP_ERR_SASL_AUTHENTICATION_FAILED:
    case RD_KAFKA_RESP_ERR__SSL:
        m_refusal = RESULT_ACCESS_DENIED;
        tell(fromUtf8(reason));
        break;
    default:
        tell(fromUtf8(reason));
    }
}

} // namespace vx::components
