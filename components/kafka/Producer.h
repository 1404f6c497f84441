#pragma once

#include "Client.h"
#include "IVXKafka.h"

#include <vx/Object.h>
#include <vx/vorb/FailureText.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace vx::components {

class KafkaProducer final : public Object, public IVXKafkaProducer, public vorb::IVXFailureText {
public:
    explicit KafkaProducer(const KafkaSettings& settings);
    KafkaProducer(const KafkaProducer&) = delete;
    KafkaProducer& operator=(const KafkaProducer&) = delete;
    /// What the brokers do not have is dropped.
    ~KafkaProducer() noexcept override;

    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap();

    /// As `KafkaClient::countPartitions`.
    void check() { m_client->countPartitions(); }

    // IVXKafkaProducer
    std::int32_t Send(const KafkaMessage* message) override;
    std::int32_t TakeReports(std::int32_t* results, std::int32_t* count, std::int32_t milliseconds) override;
    std::int32_t SetWake(std::int32_t descriptor) override;
    std::int32_t Flush(std::int32_t milliseconds) override;
    std::int32_t GetPending(std::int32_t* count) override;
    std::int32_t GetTrouble(IVXCharBuffer* text) override;

    // IVXFailureText
    std::int32_t GetFailureText(IVXCharBuffer* text) override;

private:
    using Clock = std::chrono::steady_clock;
    /// A message that the brokers may not have yet.
    struct Slot {
        std::size_t size;
        bool isDone = false;
        std::int32_t result = 0;
        String failure {};
    };
    /// One that failed and is to be sent again.
    struct Failed {
        std::uint64_t number;
        bool hasKey;
        std::string key;
        std::string value;
    };

    void open();
    void watch();
    /// False if there is no room.
    bool produce(std::uint64_t number, const KafkaMessage& message);
    static void onDelivery(rd_kafka_t* handle, const rd_kafka_message_t* message, void* client);
    void take(const rd_kafka_message_t& message);
    void finish(std::uint64_t number, rd_kafka_resp_err_t error);
    void serve(int milliseconds);
    void sendAgain();

    const KafkaSettings m_settings;
    std::unique_ptr<KafkaClient> m_client;
    std::int32_t m_wake = -1;
    std::uint64_t m_first = 0; ///< the number of the first slot
    std::deque<Slot> m_slots;
    std::int64_t m_bytes = 0; ///< of all slots
    std::size_t m_open = 0; ///< messages that the client has
    std::size_t m_done = 0; ///< slots that are done
    std::vector<Failed> m_failed;
    Clock::time_point m_lastFailure;
};

} // namespace vx::components
