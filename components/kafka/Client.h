#pragma once

#include "Settings.h"

#include <vx/String.h>

#include <cstdint>
#include <memory>

namespace vx::components {

template <auto release>
struct KafkaReleaser {
    template <class T>
    void operator()(T* object) const
    {
        release(object);
    }
};

/// What is wrong with the topic, in words. `size` is that of a message, if there is one.
String textOf(rd_kafka_resp_err_t error, const KafkaSettings& settings, std::size_t size = 0);
std::int32_t resultOf(rd_kafka_resp_err_t error);

/// The connection of a producer or consumer to the brokers. It knows why they cannot be used at the moment.
class KafkaClient {
public:
    /// Does not wait for the brokers. Throws ResultException. The callbacks of `conf` get this object, which
    /// knows its `owner`.
    KafkaClient(rd_kafka_type_t type, const KafkaSettings& settings, Conf conf, void* owner = nullptr);
    KafkaClient(const KafkaClient&) = delete;
    KafkaClient& operator=(const KafkaClient&) = delete;

    void* owner() const { return m_owner; }
    rd_kafka_t* get() const { return m_handle.get(); }
    rd_kafka_topic_t* topic() const { return m_topic.get(); }
    const KafkaSettings& settings() const { return m_settings; }

    /// Asks the brokers for the topic, and returns the number of its partitions. Throws ResultException.
    std::int32_t countPartitions();
    const String& trouble() const { return m_trouble; }
    void setTrouble(const String& text) { m_trouble = text; }
    bool isBroken() const { return m_isBroken; } ///< it will never work again

private:
    static void onError(rd_kafka_t* handle, int error, const char* reason, void* self);
    void takeError(rd_kafka_resp_err_t error, const char* reason);

    const KafkaSettings m_settings;
    void* const m_owner;
    std::unique_ptr<rd_kafka_t, KafkaReleaser<rd_kafka_destroy>> m_handle;
    std::unique_ptr<rd_kafka_topic_t, KafkaReleaser<rd_kafka_topic_destroy>> m_topic;
    String m_lastReason; ///< of a single broker
    String m_trouble;
    bool m_isBroken = false;
    std::int32_t m_refusal = 0; ///< the result, if brokers were reached and do not accept this client
};

} // namespace vx::components
