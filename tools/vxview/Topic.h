#pragma once

#include "common/Kafka.h"

#include <cstddef>
#include <string>

namespace vxview {

/// The messages of a topic of Kafka as lines, from the oldest on.
class Topic {
public:
    /// Throws UsageError for an invalid address, and Failure.
    Topic(const std::string& address, bool follows);

    /// Reads up to `size` bytes. 0 after the last message that the topic had then; one that is followed may have more
    /// later. Throws Failure.
    std::size_t read(char* bytes, std::size_t size);
    std::string getName() const { return m_address.name(); }

private:
    bool fetch();

    const vxtools::KafkaAddress m_address;
    const bool m_follows;
    vx::Reference<vx::components::IVXKafkaConsumer> m_consumer;
    std::string m_line;
    std::size_t m_begin = 0; ///< of what was not read yet
    bool m_wasAtEnd = false;
};

} // namespace vxview
