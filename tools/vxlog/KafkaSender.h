#pragma once

#include "Delivery.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace vxlog {

/// Sends the lines of a backlog to a topic. Each becomes an object of JSON with its level, its text, the time, the
/// host, an id of the backlog, and its number there: a line that is in the topic twice, after a crash, has the same id
/// and number.
class KafkaSender final : public Delivery {
public:
    /// The lines of `backlog` begin with their level: "<3>text".
    KafkaSender(const Destination& destination, bool keeps, Backlog& backlog, Teller& teller);
    ~KafkaSender() override;

    // Delivery
    void connect() override;

private:
    class Entries;

    // Delivery
    void run() override;
    void disconnect() noexcept override;

    void sendAll();
    void takeReports();
    void lookForTrouble();
    void wait();

    const std::unique_ptr<Entries> m_entries;
    vx::Reference<vx::components::IVXKafkaProducer> m_producer;
    std::uint64_t m_acknowledged;
    std::string m_block; ///< lines that were read
    std::string_view m_rest; ///< those that were not sent yet
    std::uint64_t m_sent; ///< the number of the next of them

    std::string m_trouble; ///< why the brokers do not take lines
    bool m_isTroubleTold = false;
    std::uint64_t m_refused = 0; ///< lines that they will never take
    std::string m_refusal;
};

} // namespace vxlog
