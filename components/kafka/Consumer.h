#pragma once

#include "Client.h"
#include "IVXKafka.h"

#include <vx/Object.h>
#include <vx/vorb/FailureText.h>

#include <memory>
#include <vector>

namespace vx::components {

class KafkaConsumer final : public Object, public IVXKafkaConsumer, public vorb::IVXFailureText {
public:
    /// Asks the brokers for the partitions. Throws ResultException.
    explicit KafkaConsumer(const KafkaSettings& settings);
    KafkaConsumer(const KafkaConsumer&) = delete;
    KafkaConsumer& operator=(const KafkaConsumer&) = delete;
    ~KafkaConsumer() noexcept override;

    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap();

    // IVXKafkaConsumer
    std::int32_t Read(KafkaMessage* message, std::int32_t* state, std::int32_t milliseconds) override;
    std::int32_t GetTrouble(IVXCharBuffer* text) override;

    // IVXFailureText
    std::int32_t GetFailureText(IVXCharBuffer* text) override;

private:
    bool isAtEnd() const;

    KafkaClient m_client;
    std::unique_ptr<rd_kafka_queue_t, KafkaReleaser<rd_kafka_queue_destroy>> m_queue;
    std::vector<bool> m_isAtEnd; ///< of each partition
    std::unique_ptr<rd_kafka_message_t, KafkaReleaser<rd_kafka_message_destroy>> m_message; ///< the last one
};

} // namespace vx::components
